#pragma once

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>

#include "app/launch_identity.h"
#include "peer/make_area.h"
#include "peer/stand_in.h"
#include "tests/support/temporary_folder.h"

namespace updown {

constexpr int kPatienceMs = 10000;
constexpr int kExitMs = 2000;

// A stand-in service over an area of its own, and this process's environment as a parent
// application would set it for a client of that service.
class ServedLaunch {
 public:
  explicit ServedLaunch(peer::Options options = {}) {
    peer::AreaOptions area;
    area.folder = AreaFolder();
    area.packages = 4;
    peer::MakeArea(area);
    options.root = AreaFolder();
    service_ = std::make_unique<peer::StandIn>(std::move(options));
    for (const auto& [name, value] : service_->Environment()) {
      setenv(name.c_str(), value.c_str(), 1);
    }
    setenv("XDG_DATA_HOME", DataFolder().c_str(), 1);
    setenv("XDG_STATE_HOME", StateFolder().c_str(), 1);
    setenv("HOME", folder_.Path().c_str(), 1);
    launch_ = ReadLaunchState();
    launch_.serverName = "fileservice";
  }

  // Has a request of this number come?
  bool Saw(std::uint32_t message) const {
    const auto requests = service_->Requests();
    return std::any_of(requests.begin(), requests.end(),
                       [message](const peer::SeenRequest& r) { return r.message == message; });
  }

  peer::StandIn& Service() { return *service_; }
  const LaunchState& Launch() const { return launch_; }
  std::string AreaFolder() const { return folder_.Path() + "/area"; }
  std::string DataFolder() const { return folder_.Path() + "/data"; }
  std::string StateFolder() const { return folder_.Path() + "/state"; }
  std::string TaskListFile() const {
    return DataFolder() + "/oxapp/" + launch_.identityHash + ".lst";
  }

 private:
  test::TemporaryFolder folder_;
  std::unique_ptr<peer::StandIn> service_;
  LaunchState launch_;
};

}  // namespace updown
