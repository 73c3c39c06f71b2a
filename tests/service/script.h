#pragma once

#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/unique_fd.h"
#include "service/connection.h"
#include "tests/wire/scripted_peer.h"
#include "tests/wire/wire_bytes.h"

namespace updown::testing {

inline std::string Message(std::size_t code, const std::string& data, const std::string& version) {
  return Framed(Attribute(1, Number(code)) + (data.empty() ? "" : Attribute(2, data)) + version +
                '\xFF');
}
inline std::string Request(std::size_t code, const std::string& data = {}) {
  return Message(code, data, Wire("0A 0004 01000000"));
}
// Replies of the service. The first dialect's carry the version attribute 10, as requests do.
inline std::string First(std::size_t code, const std::string& data = {}) {
  return Request(code, data);
}
inline std::string Second(std::size_t code, const std::string& data = {}) {
  return Message(code, data, "");
}

// A service that plays its script on a thread of its own, and the connection to it.
class ServicePeer {
 public:
  explicit ServicePeer(std::vector<Step> steps, std::size_t piece = 0) {
    int pair[2] = {-1, -1};
    socketpair(AF_UNIX, SOCK_STREAM, 0, pair);
    link_.Adopt(pair[0]);
    thread_ = std::thread([this, peer = UniqueFd(pair[1]), steps = std::move(steps), piece] {
      fault_ = PlayScript(peer.Get(), steps, piece);
      char byte = 0;
      if (recv(peer.Get(), &byte, 1, 0) > 0) {
        fault_ += "more was sent than expected";
      }
    });
  }
  ~ServicePeer() { Finish(); }

  Connection& Link() { return link_; }
  // Hangs up and tells what was not as written; empty if all was.
  std::string Finish() {
    link_.Close();
    if (thread_.joinable()) {
      thread_.join();
    }
    return fault_;
  }

 private:
  Connection link_;
  std::string fault_;
  std::thread thread_;
};

}  // namespace updown::testing
