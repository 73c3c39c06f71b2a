#pragma once

#include <string>
#include <utility>
#include <vector>

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

// A scripted service and the connection to it.
class ServicePeer : public ScriptedPeer {
 public:
  explicit ServicePeer(std::vector<Step> steps, std::size_t piece = 0)
      : ScriptedPeer(std::move(steps), piece) {
    link_.Adopt(TakeSocket());
  }

  Connection& Link() { return link_; }
  std::string Finish() {
    link_.Close();
    return ScriptedPeer::Finish();
  }

 private:
  Connection link_;
};

}  // namespace updown::testing
