#include "app/task_list_path.h"

#include "platform/folders.h"

namespace updown {

std::optional<std::string> TaskListPath(const std::string& identityHash) {
  const std::optional<std::string> data = ApplicationDataFolder();
  if (!data) {
    return std::nullopt;
  }
  const std::string folder = *data + "/oxapp";
  if (!MakeFolder(folder)) {
    return std::nullopt;
  }
  return folder + "/" + identityHash + ".lst";
}

}  // namespace updown
