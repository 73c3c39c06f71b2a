#pragma once

#include <string>

#include "app/launch_identity.h"
#include "peer/make_area.h"
#include "tests/support/service_world.h"

namespace updown {

constexpr int kPatienceMs = 10000;
constexpr int kExitMs = 2000;

// A launch before a package area of four packages.
class ServedLaunch : public test::ServiceWorld {
 public:
  ServedLaunch() {
    peer::MakeArea({.folder = AreaFolder(), .packages = 4});
    launch = ReadLaunchState();
    launch.serverName = "fileservice";
  }

  // Has a request of this number come?
  bool Saw(std::uint32_t message) const { return Count(message) > 0; }

  peer::StandIn& Service() { return peer; }
  const LaunchState& Launch() const { return launch; }
  std::string AreaFolder() const { return served.Path(); }
  std::string TaskListFile() const {
    return DataFolder() + "/oxapp/" + launch.identityHash + ".lst";
  }
};

}  // namespace updown
