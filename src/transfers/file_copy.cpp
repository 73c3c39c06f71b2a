#include "transfers/file_copy.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <vector>

#include "transfers/folder_access.h"

namespace updown {
namespace {

constexpr std::size_t kChunk = 262144;
constexpr mode_t kRights = 0777;

struct Place {
  int folder;
  const std::string& name;
};

bool WriteAll(int file, const char* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t written = write(file, bytes, count);
    if (written < 0 && errno == EINTR) {
      continue;
    }
    if (written <= 0) {
      return false;
    }
    bytes += written;
    count -= static_cast<std::size_t>(written);
  }
  return true;
}

using Stop = const std::atomic<bool>*;

bool CopyBytes(int from, int to, Stop stop) {
  std::vector<char> chunk(kChunk);
  while (stop == nullptr || !*stop) {
    const ssize_t count = read(from, chunk.data(), chunk.size());
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count <= 0) {
      return count == 0;
    }
    if (!WriteAll(to, chunk.data(), static_cast<std::size_t>(count))) {
      return false;
    }
  }
  return false;
}

// Rights and times last, since writing changes the one and a read-only folder takes no entries.
bool Finish(int to, const struct stat& status) {
  const std::array<timespec, 2> times{status.st_atim, status.st_mtim};
  return fchmod(to, status.st_mode & kRights) == 0 && futimens(to, times.data()) == 0 &&
         fsync(to) == 0;
}

bool CopyFile(const Place& from, const Place& to, Stop stop) {
  const UniqueFd source(
      openat(from.folder, from.name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (!source || fstat(source.Get(), &status) != 0 || !S_ISREG(status.st_mode)) {
    return false;
  }
  const UniqueFd target(openat(to.folder, to.name.c_str(),
                               O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
  return target && CopyBytes(source.Get(), target.Get(), stop) && Finish(target.Get(), status);
}

bool CopyLink(const Place& from, const Place& to) {
  std::array<char, PATH_MAX> text{};
  const ssize_t length = readlinkat(from.folder, from.name.c_str(), text.data(), text.size() - 1);
  return length > 0 && symlinkat(text.data(), to.folder, to.name.c_str()) == 0;
}

bool CopyBelow(const Place& from, const Place& to, int depth, Stop stop);

bool CopyFolder(const Place& from, const Place& to, int depth, Stop stop) {
  const UniqueFd source = OpenInnerFolder(from.folder, from.name);
  struct stat status {};
  if (!source || fstat(source.Get(), &status) != 0 || depth == kDeepestFolder ||
      mkdirat(to.folder, to.name.c_str(), 0700) != 0) {
    return false;
  }
  const UniqueFd target = OpenInnerFolder(to.folder, to.name);
  const auto names = NamesIn(source.Get());
  if (!target || !names) {
    return false;
  }
  for (const std::string& name : *names) {
    if (!CopyBelow({source.Get(), name}, {target.Get(), name}, depth + 1, stop)) {
      return false;
    }
  }
  return Finish(target.Get(), status);
}

bool CopyBelow(const Place& from, const Place& to, int depth, Stop stop) {
  struct stat status {};
  if (fstatat(from.folder, from.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    return false;
  }
  if (S_ISDIR(status.st_mode)) {
    return CopyFolder(from, to, depth, stop);
  }
  return S_ISLNK(status.st_mode) ? CopyLink(from, to) : CopyFile(from, to, stop);
}

}  // namespace

bool CopyEntry(int fromFolder, const std::string& fromName, int toFolder, const std::string& toName,
               const std::atomic<bool>* stop) {
  return CopyBelow({fromFolder, fromName}, {toFolder, toName}, 0, stop);
}

}  // namespace updown
