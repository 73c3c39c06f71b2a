#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "engine/launch_state.h"
#include "peer/stand_in.h"
#include "service/operations.h"
#include "tests/support/environment.h"
#include "tests/support/temporary_folder.h"

namespace updown::test {

inline peer::Options Dialect(int dialect, std::uint32_t blockLength = 4096,
                             std::optional<peer::Login> login = {}) {
  peer::Options options;
  options.dialect = dialect;
  options.blockLength = blockLength;
  options.login = std::move(login);
  return options;
}

// A stand-in service over a folder, and this process as a parent application would start a client
// of that service. What the client keeps lies in a folder of its own.
class ServiceWorld {
 public:
  explicit ServiceWorld(peer::Options options = {}) : peer(Serving(served, std::move(options))) {
    launch.serverName = "fileservice";
  }

  // How many requests of this number have come.
  long Count(std::uint32_t message) const {
    const auto requests = peer.Requests();
    return std::ranges::count(requests, message, &peer::SeenRequest::message);
  }
  std::string DataFolder() const { return local.File("data"); }
  std::string StateFolder() const { return local.File("state"); }

  TemporaryFolder served;
  TemporaryFolder local;
  peer::StandIn peer;
  ScopedEnvironment environment{Variables()};
  LaunchState launch;
  FileService service;

 private:
  static peer::Options Serving(const TemporaryFolder& folder, peer::Options options) {
    options.root = folder.Path();
    return options;
  }
  std::vector<std::pair<std::string, std::string>> Variables() const {
    auto variables = peer.Environment();
    variables.emplace_back("HOME", local.Path());
    variables.emplace_back("XDG_DATA_HOME", DataFolder());
    variables.emplace_back("XDG_STATE_HOME", StateFolder());
    return variables;
  }
};

}  // namespace updown::test
