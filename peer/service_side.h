#pragma once

#include "peer/connection.h"
#include "peer/world.h"

namespace updown::peer {

// The service's side of one joined connection, from the join to its end.
class ServiceConnection {
 public:
  ServiceConnection(World& world, Connection& connection);

  // Answers requests until the client goes, a fault ends it or the stand-in stops.
  void Run();

 private:
  struct Request {
    std::uint32_t message = 0;
    View data;
    View behindList;  // raw bytes between the end mark and the end of the frame
  };

  bool ServeOne();
  bool Answer(const Request& request, const Bytes& frame);
  bool SendSpoiled(const Fault& fault, std::uint32_t message, Reply reply);
  Reply Replacement(const Fault& fault) const;
  Reply Perform(const Request& request, const std::optional<Fault>& fault);
  Reply PerformInFolder(const Request& request, const std::optional<Fault>& fault);
  Reply OpenSession(const Request& request);
  Reply Attach(const Request& request);
  Reply Login(const Request& request);
  Reply ListFolder(const Request& request, const std::optional<Fault>& fault) const;
  Reply Rename(const Request& request) const;
  Reply ReadBlock(const Request& request, const std::optional<Fault>& fault) const;
  Reply WriteBlock(const Request& request) const;
  Reply Information(const Request& request) const;
  Reply Outcome(std::uint32_t message, Refusal refusal) const;

  World& world_;
  Connection& connection_;
  const Dialect& dialect_;
  std::string sessid_;
  bool authenticated_ = false;
};

}  // namespace updown::peer
