#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "peer/stand_in.h"
#include "platform/unique_fd.h"

namespace updown::demo {

using Clock = std::chrono::steady_clock;

// A failed check ends everything: throws std::runtime_error with `what`.
void Check(bool holds, const std::string& what);

// A process of kill_client, and what it says. Killed with the object. Throws if it cannot start.
class ClientProcess {
 public:
  // `seed` and `manner` as in client.cpp.
  ClientProcess(const std::string& folder, std::uint32_t seed, const std::string& manner,
                const peer::StandIn& service);
  ~ClientProcess();
  ClientProcess(const ClientProcess&) = delete;
  ClientProcess& operator=(const ClientProcess&) = delete;

  // False if it has ended, or closed its output, by itself.
  bool ReadFor(std::chrono::milliseconds time);
  // As waitpid tells it.
  int KillAndWait();
  int Wait();
  // Asks it to come to its regular end. False if it has not ended well within the time.
  bool End(std::chrono::milliseconds limit);

  // The lines that came whole.
  std::vector<std::string> Said() const;

 private:
  bool ReadSome();

  UniqueFd output_;
  pid_t pid_ = -1;
  std::string said_;
};

}  // namespace updown::demo
