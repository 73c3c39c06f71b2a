#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "peer/options.h"

namespace updown::peer {

// A relay and a file service in one, on loopback, over a folder: for demo, tests and people who
// work on the client. Written against the bytes of the wire, with a codec of its own, so that a
// mistake of the client does not cancel out. Includes nothing from src/.

// Starts listening on an ephemeral loopback port when made; stops, with all its connections and
// threads, when destroyed. Thread-safe.
class StandIn {
 public:
  // Throws std::exception if the folder is missing, the dialect unknown or the port taken.
  explicit StandIn(Options options);
  ~StandIn();
  StandIn(const StandIn&) = delete;
  StandIn& operator=(const StandIn&) = delete;

  std::uint16_t RelayPort() const;

  // The eight variables that a client needs, names and values; identity as told above, "user", and
  // application number 12 (coded "DBDC").
  std::vector<std::pair<std::string, std::string>> Environment(int languageId = 1033) const;

  void AddFault(const Fault& fault);
  void ClearFaults();  // and delays
  void SetDelay(const Delay& delay);
  // While it is off, new connections wait as for a service that is stuck.
  void SetAccepting(bool on);
  void SetBlockLength(std::uint32_t length);
  // Sessions issued so far are no longer known: attaching with them is refused with "login needed".
  void ForgetSessions();

  std::vector<SeenRequest> Requests() const;
  void ForgetRequests();
  std::uint32_t OpenConnections() const;  // service connections that are joined right now
  std::uint32_t MostConnections() const;  // most at a time so far

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace updown::peer
