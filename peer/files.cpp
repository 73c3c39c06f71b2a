#include "peer/files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <limits>
#include <memory>
#include <stdexcept>

namespace updown::peer {

namespace {

constexpr std::size_t kLongestName = 255;

Refusal RefusalOf(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
    case ELOOP:
      return Refusal::NotFound;
    case ENAMETOOLONG:
    case EINVAL:
    case EILSEQ:
      return Refusal::BadName;
    default:
      return Refusal::NotAllowed;
  }
}

Refusal LastRefusal() { return RefusalOf(errno); }

// The components of a path; empty ones and "." are dropped.
Refusal SplitPath(std::string_view path, std::vector<std::string>& parts) {
  if (path.find('\0') != std::string_view::npos) return Refusal::BadName;
  while (!path.empty()) {
    const std::size_t slash = std::min(path.find('/'), path.size());
    const std::string_view part = path.substr(0, slash);
    path.remove_prefix(std::min(slash + 1, path.size()));
    if (part.empty() || part == ".") continue;
    if (part == "..") return Refusal::NotAllowed;
    if (part.size() > kLongestName) return Refusal::BadName;
    parts.emplace_back(part);
  }
  return Refusal::None;
}

// False for what is neither folder nor plain file.
bool Describe(std::string name, const struct stat& status, FolderEntry& entry) {
  if (!S_ISDIR(status.st_mode) && !S_ISREG(status.st_mode)) return false;
  entry.name = std::move(name);
  entry.isFolder = S_ISDIR(status.st_mode);
  entry.time = static_cast<std::uint32_t>(status.st_mtim.tv_sec);
  const auto largest = std::int64_t{std::numeric_limits<std::uint32_t>::max()};
  entry.size = entry.isFolder
                   ? 0
                   : static_cast<std::uint32_t>(std::min<std::int64_t>(status.st_size, largest));
  entry.mode = static_cast<std::uint16_t>(status.st_mode & 0777);
  return true;
}

struct CloseFolder {
  void operator()(DIR* folder) const { ::closedir(folder); }
};

}  // namespace

// Where the last component of a path lies: the folder that holds it, opened, and its name, which is
// empty for "/" itself.
struct ServedFolder::Place {
  Handle folder;
  std::string name;
};

ServedFolder::ServedFolder(const std::string& root)
    : root_(::open(root.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)) {
  if (!root_.IsOpen()) throw std::runtime_error("cannot serve the folder " + root);
}

Refusal ServedFolder::Find(std::string_view path, Place& place) const {
  std::vector<std::string> parts;
  const Refusal refusal = SplitPath(path, parts);
  if (refusal != Refusal::None) return refusal;
  place.folder = Handle(::openat(root_.Get(), ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (parts.empty()) return Refusal::None;
  place.name = parts.back();
  parts.pop_back();
  for (const std::string& part : parts) {
    place.folder = Handle(
        ::openat(place.folder.Get(), part.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!place.folder.IsOpen()) return LastRefusal();
  }
  return Refusal::None;
}

Refusal ServedFolder::OpenFolder(std::string_view path, Handle& folder) const {
  Place place;
  const Refusal refusal = Find(path, place);
  if (refusal != Refusal::None) return refusal;
  const char* name = place.name.empty() ? "." : place.name.c_str();
  folder =
      Handle(::openat(place.folder.Get(), name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  return folder.IsOpen() ? Refusal::None : LastRefusal();
}

Refusal ServedFolder::OpenFile(std::string_view path, int flags, Handle& file) const {
  Place place;
  const Refusal refusal = Find(path, place);
  if (refusal != Refusal::None) return refusal;
  if (place.name.empty()) return Refusal::NotFound;
  // Without O_NONBLOCK a pipe in the folder would hold the thread.
  file = Handle(::openat(place.folder.Get(), place.name.c_str(),
                         flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0644));
  if (!file.IsOpen()) return LastRefusal();
  struct stat status {};
  if (::fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) return Refusal::NotFound;
  return Refusal::None;
}

Refusal ServedFolder::ListEntries(std::string_view path, std::vector<FolderEntry>& entries) const {
  Handle folder;
  const Refusal refusal = OpenFolder(path, folder);
  if (refusal != Refusal::None) return refusal;
  struct stat status {};
  if (::fstat(folder.Get(), &status) != 0) return LastRefusal();
  const std::unique_ptr<DIR, CloseFolder> stream(::fdopendir(folder.Get()));
  if (!stream) return LastRefusal();
  const int descriptor = folder.Release();  // the stream closes it

  entries.assign(2, {});
  Describe(".", status, entries[0]);
  Describe("..", status, entries[1]);
  while (const dirent* found = ::readdir(stream.get())) {
    const std::string_view name = found->d_name;
    if (name == "." || name == "..") continue;
    FolderEntry entry;
    if (::fstatat(descriptor, found->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
        Describe(found->d_name, status, entry)) {
      entries.push_back(std::move(entry));
    }
  }
  std::sort(entries.begin() + 2, entries.end(),
            [](const FolderEntry& a, const FolderEntry& b) { return a.name < b.name; });
  return Refusal::None;
}

Refusal ServedFolder::FileInformation(std::string_view path, FolderEntry& entry) const {
  Handle file;
  const Refusal refusal = OpenFile(path, O_RDONLY, file);
  if (refusal != Refusal::None) return refusal;
  struct stat status {};
  if (::fstat(file.Get(), &status) != 0) return LastRefusal();
  const std::size_t slash = path.rfind('/');
  Describe(std::string(slash == std::string_view::npos ? path : path.substr(slash + 1)), status,
           entry);
  return Refusal::None;
}

Refusal ServedFolder::ReadBlock(std::string_view path, std::uint32_t offset, std::uint32_t length,
                                Bytes& block) const {
  Handle file;
  const Refusal refusal = OpenFile(path, O_RDONLY, file);
  if (refusal != Refusal::None) return refusal;
  struct stat status {};
  if (::fstat(file.Get(), &status) != 0) return LastRefusal();
  const std::int64_t left = std::max<std::int64_t>(status.st_size - std::int64_t{offset}, 0);
  block.resize(static_cast<std::size_t>(std::min<std::int64_t>(left, length)));
  std::size_t done = 0;
  while (done < block.size()) {
    const ssize_t count = ::pread(file.Get(), block.data() + done, block.size() - done,
                                  static_cast<off_t>(offset + done));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return LastRefusal();
    if (count == 0) break;  // the file has shrunk meanwhile
    done += static_cast<std::size_t>(count);
  }
  block.resize(done);
  return Refusal::None;
}

Refusal ServedFolder::WriteBlock(std::string_view path, std::uint32_t offset, View block) const {
  Handle file;
  const Refusal refusal = OpenFile(path, O_WRONLY | O_CREAT, file);
  if (refusal != Refusal::None) return refusal;
  std::size_t done = 0;
  while (done < block.size()) {
    const ssize_t count = ::pwrite(file.Get(), block.data() + done, block.size() - done,
                                   static_cast<off_t>(offset + done));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return LastRefusal();
    done += static_cast<std::size_t>(count);
  }
  return Refusal::None;
}

Refusal ServedFolder::CreateFolder(std::string_view path) const {
  Place place;
  const Refusal refusal = Find(path, place);
  if (refusal != Refusal::None) return refusal;
  if (place.name.empty()) return Refusal::NotAllowed;
  return ::mkdirat(place.folder.Get(), place.name.c_str(), 0755) == 0 ? Refusal::None
                                                                      : LastRefusal();
}

Refusal ServedFolder::RemoveFolder(std::string_view path) const {
  Place place;
  const Refusal refusal = Find(path, place);
  if (refusal != Refusal::None) return refusal;
  if (place.name.empty()) return Refusal::NotAllowed;
  return ::unlinkat(place.folder.Get(), place.name.c_str(), AT_REMOVEDIR) == 0 ? Refusal::None
                                                                               : LastRefusal();
}

Refusal ServedFolder::RemoveFile(std::string_view path) const {
  Place place;
  const Refusal refusal = Find(path, place);
  if (refusal != Refusal::None) return refusal;
  struct stat status {};
  if (::fstatat(place.folder.Get(), place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    return LastRefusal();
  }
  if (!S_ISREG(status.st_mode)) return Refusal::NotFound;
  return ::unlinkat(place.folder.Get(), place.name.c_str(), 0) == 0 ? Refusal::None : LastRefusal();
}

Refusal ServedFolder::Rename(std::string_view oldPath, std::string_view newPath) const {
  Place from;
  Place to;
  Refusal refusal = Find(oldPath, from);
  if (refusal == Refusal::None) refusal = Find(newPath, to);
  if (refusal != Refusal::None) return refusal;
  if (from.name.empty() || to.name.empty()) return Refusal::NotAllowed;
  struct stat status {};
  FolderEntry entry;
  if (::fstatat(from.folder.Get(), from.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    return LastRefusal();
  }
  if (!Describe(from.name, status, entry)) return Refusal::NotFound;
  return ::renameat2(from.folder.Get(), from.name.c_str(), to.folder.Get(), to.name.c_str(),
                     RENAME_NOREPLACE) == 0
             ? Refusal::None
             : LastRefusal();
}

}  // namespace updown::peer
