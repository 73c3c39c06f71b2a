#include "transfers/folder_access.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

namespace updown {

std::optional<PathParts> SplitPath(std::string_view path) {
  while (path.size() > 1 && path.back() == '/') {
    path.remove_suffix(1);
  }
  const std::size_t slash = path.rfind('/');
  const bool bare = slash == std::string_view::npos;
  const std::string_view name = bare ? path : path.substr(slash + 1);
  if (name.empty() || name == "." || name == ".." || path.find('\0') != std::string_view::npos) {
    return std::nullopt;
  }
  std::string folder = bare ? "." : std::string(path.substr(0, slash));
  return PathParts{folder.empty() ? "/" : std::move(folder), std::string(name)};
}

UniqueFd OpenFolderPath(const std::string& path) {
  return UniqueFd(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

UniqueFd OpenInnerFolder(int folder, const std::string& name) {
  return UniqueFd(openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

std::optional<std::vector<std::string>> NamesIn(int folder) {
  const int copy = fcntl(folder, F_DUPFD_CLOEXEC, 0);
  const std::unique_ptr<DIR, int (*)(DIR*)> stream(copy < 0 ? nullptr : fdopendir(copy), &closedir);
  if (!stream) {
    if (copy >= 0) {
      close(copy);
    }
    return std::nullopt;
  }
  std::vector<std::string> names;
  errno = 0;
  while (const dirent* entry = readdir(stream.get())) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") {
      names.emplace_back(name);
    }
  }
  if (errno != 0) {
    return std::nullopt;
  }
  return names;
}

}  // namespace updown
