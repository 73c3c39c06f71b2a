#include "transfers/local_removal.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "transfers/folder_access.h"

namespace updown {
namespace {

bool RemoveBelow(int folder, const std::string& name, const dev_t* device, int depth);

bool RemoveFolder(int folder, const std::string& name, const dev_t* device, int depth) {
  const UniqueFd inner = OpenInnerFolder(folder, name);
  struct stat status {};
  if (!inner || fstat(inner.Get(), &status) != 0) {
    return false;
  }
  if (depth == kDeepestFolder || (device != nullptr && *device != status.st_dev)) {
    return false;
  }
  const auto names = NamesIn(inner.Get());
  if (!names) {
    return false;
  }
  bool all = true;
  for (const std::string& each : *names) {
    all = RemoveBelow(inner.Get(), each, &status.st_dev, depth + 1) && all;
  }
  return unlinkat(folder, name.c_str(), AT_REMOVEDIR) == 0 && all;
}

bool RemoveBelow(int folder, const std::string& name, const dev_t* device, int depth) {
  if (unlinkat(folder, name.c_str(), 0) == 0 || errno == ENOENT) {
    return true;
  }
  // Some file systems answer EPERM for a folder.
  return (errno == EISDIR || errno == EPERM) && RemoveFolder(folder, name, device, depth);
}

}  // namespace

bool RemoveEntry(int folder, const std::string& name) {
  return RemoveBelow(folder, name, nullptr, 0);
}

bool DeleteLocal(const std::string& path) {
  const auto parts = SplitPath(path);
  if (!parts) {
    return false;
  }
  const UniqueFd folder = OpenFolderPath(parts->folder);
  if (!folder) {
    return errno == ENOENT;
  }
  return RemoveEntry(folder.Get(), parts->name);
}

}  // namespace updown
