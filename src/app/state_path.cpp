#include "app/state_path.h"

#include "platform/folders.h"

namespace updown {

std::optional<std::string> StatePath(const std::string& name) {
  const std::optional<std::string> state = StateFolder();
  if (!state || !MakeFolder(*state + "/updown")) {
    return std::nullopt;
  }
  return *state + "/updown/" + name;
}

}  // namespace updown
