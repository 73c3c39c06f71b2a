#include "platform/folders.h"

#include <pwd.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <vector>

namespace updown {
namespace {

constexpr mode_t kPrivateMode = 0700;  // for the user's data folder and what leads to it
constexpr mode_t kFolderMode = 0777;   // less the umask

bool IsFolder(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::string WithoutTrailingSlash(std::string path) {
  while (path.size() > 1 && path.back() == '/') {
    path.pop_back();
  }
  return path;
}

// The variable's value if it is an absolute path, else empty.
std::string AbsolutePathVariable(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && *value == '/' ? WithoutTrailingSlash(value) : std::string();
}

std::string HomeFromUserDatabase() {
  std::vector<char> buffer(4096);
  passwd entry{};
  passwd* found = nullptr;
  int error = ERANGE;
  while (error == ERANGE && buffer.size() <= (std::size_t{1} << 20)) {
    error = getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found);
    buffer.resize(error == ERANGE ? buffer.size() * 2 : buffer.size());
  }
  if (error != 0 || found == nullptr || found->pw_dir == nullptr || *found->pw_dir != '/') {
    return {};
  }
  return WithoutTrailingSlash(found->pw_dir);
}

// The folder that `variable` names, else `below` in the user's home; empty without either.
std::string UserFolderPath(const char* variable, std::string_view below) {
  std::string folder = AbsolutePathVariable(variable);
  if (!folder.empty()) {
    return folder;
  }
  std::string home = AbsolutePathVariable("HOME");
  if (home.empty()) {
    home = HomeFromUserDatabase();
  }
  return home.empty() ? home : home.append(below);
}

// Makes the folder at an absolute path with all that leads to it.
bool MakeFolderPath(const std::string& path) {
  std::size_t end = 0;
  do {
    end = path.find('/', end + 1);
    mkdir(path.substr(0, end).c_str(), kPrivateMode);  // failures show at the end
  } while (end != std::string::npos);
  return IsFolder(path);
}

std::optional<std::string> Made(std::string folder) {
  if (folder.empty() || !MakeFolderPath(folder)) {
    return std::nullopt;
  }
  return folder;
}

}  // namespace

std::optional<std::string> ApplicationDataFolder() {
  return Made(UserFolderPath("XDG_DATA_HOME", "/.local/share"));
}

std::optional<std::string> StateFolder() {
  return Made(UserFolderPath("XDG_STATE_HOME", "/.local/state"));
}

std::string ExecutableFolder() {
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? std::string(".") : program.parent_path().string();
}

bool MakeFolder(const std::string& path) {
  if (mkdir(path.c_str(), kFolderMode) == 0) {
    return true;
  }
  const int error = errno;  // the look at what is there has one of its own
  const bool there = IsFolder(path);
  errno = error;
  return there;
}

bool PathExists(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0;  // a link that leads nowhere is there, too
}

}  // namespace updown
