#include "transfers/file_move.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

#include "transfers/file_copy.h"
#include "transfers/folder_access.h"
#include "transfers/local_removal.h"

namespace updown {
namespace {

struct Move {
  UniqueFd from;
  UniqueFd to;
  std::string name;
  bool isFolder = false;
  bool replaces = false;  // a file or link stands under the name in the target folder
};

std::optional<struct stat> Look(int folder, const std::string& name) {
  struct stat status {};
  if (fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    return std::nullopt;
  }
  return status;
}

bool SameNode(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// A file system that does not know the flag gives EINVAL. There a plain rename must do: it never
// replaces a folder that holds anything.
bool RenameToFree(int from, const std::string& name, int to, const std::string& target) {
  if (renameat2(from, name.c_str(), to, target.c_str(), RENAME_NOREPLACE) == 0) {
    return true;
  }
  if (errno != EINVAL || Look(to, target)) {
    return false;
  }
  return renameat(from, name.c_str(), to, target.c_str()) == 0;
}

bool Exchange(int folder, const std::string& a, const std::string& b) {
  return renameat2(folder, a.c_str(), folder, b.c_str(), RENAME_EXCHANGE) == 0;
}

std::string TemporaryName() {
  std::uint64_t number = 0;
  if (getrandom(&number, sizeof number, 0) != sizeof number) {
    number = static_cast<std::uint64_t>(getpid());
  }
  return ".updown-" + std::to_string(number) + ".part";
}

// Takes the source away in one step: a folder leaves its name first and is emptied behind it.
bool RemoveSource(const Move& move, const std::string& aside) {
  if (!move.isFolder) {
    return unlinkat(move.from.Get(), move.name.c_str(), 0) == 0;
  }
  if (!RenameToFree(move.from.Get(), move.name, move.from.Get(), aside)) {
    return false;
  }
  RemoveEntry(move.from.Get(), aside);
  return true;
}

// The old file of that name waits under the copy's first name until the source is gone, so that it
// can be put back.
bool PublishCopy(const Move& move, const std::string& copy) {
  const int to = move.to.Get();
  const bool exchanged = move.replaces && Exchange(to, copy, move.name);
  if (!exchanged) {
    const bool published = move.replaces ? renameat(to, copy.c_str(), to, move.name.c_str()) == 0
                                         : RenameToFree(to, copy, to, move.name);
    if (!published) {
      return false;
    }
  }
  fsync(to);
  if (RemoveSource(move, copy)) {
    if (exchanged) {
      RemoveEntry(to, copy);
    }
    return true;
  }
  if (exchanged) {
    Exchange(to, copy, move.name);
  } else {
    RenameToFree(to, move.name, to, copy);
  }
  return false;
}

bool MoveByCopy(const Move& move, const std::atomic<bool>* stop) {
  const std::string copy = TemporaryName();
  if (CopyEntry(move.from.Get(), move.name, move.to.Get(), copy, stop) && PublishCopy(move, copy)) {
    return true;
  }
  RemoveEntry(move.to.Get(), copy);
  return false;
}

bool MoveByRename(const Move& move) {
  if (move.isFolder) {
    return RenameToFree(move.from.Get(), move.name, move.to.Get(), move.name);
  }
  return renameat(move.from.Get(), move.name.c_str(), move.to.Get(), move.name.c_str()) == 0;
}

bool Carry(Move& move, MoveRoad road, const std::atomic<bool>* stop) {
  const auto source = Look(move.from.Get(), move.name);
  struct stat from {};
  struct stat to {};
  if (!source || fstat(move.from.Get(), &from) != 0 || fstat(move.to.Get(), &to) != 0 ||
      SameNode(from, to)) {
    return false;
  }
  move.isFolder = S_ISDIR(source->st_mode);
  if (const auto target = Look(move.to.Get(), move.name)) {
    if (move.isFolder || !(S_ISREG(target->st_mode) || S_ISLNK(target->st_mode))) {
      return false;
    }
    if (SameNode(*source, *target)) {  // two names of one file: a rename would leave both
      return unlinkat(move.from.Get(), move.name.c_str(), 0) == 0;
    }
    move.replaces = true;
  }
  if (road == MoveRoad::Rename && MoveByRename(move)) {
    return true;
  }
  return (road == MoveRoad::Copy || errno == EXDEV) && MoveByCopy(move, stop);
}

}  // namespace

std::optional<std::string> MoveLocal(const std::string& path, const std::string& folder,
                                     MoveRoad road, const std::atomic<bool>* stop) {
  const auto parts = SplitPath(path);
  if (!parts || folder.empty()) {
    return std::nullopt;
  }
  Move move{OpenFolderPath(parts->folder), OpenFolderPath(folder), parts->name};
  if (!move.from || !move.to || !Carry(move, road, stop)) {
    return std::nullopt;
  }
  return folder + (folder.back() == '/' ? "" : "/") + parts->name;
}

}  // namespace updown
