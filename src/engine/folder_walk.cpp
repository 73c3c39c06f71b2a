#include "engine/folder_walk.h"

#include <cerrno>
#include <cstdint>
#include <utility>

#include "engine/package.h"
#include "localdata/file_names.h"
#include "localdata/files.h"
#include "platform/folders.h"
#include "service/result_codes.h"

namespace updown {
namespace {

// A folder on both sides, each path ending in "/".
struct WalkPlace {
  std::string remote;
  std::string local;

  bool Fits(std::string_view name) const {
    return FitsPath(remote + std::string(name)) && FitsPath(local + std::string(name));
  }
  WalkPlace Inside(const std::string& name) const {
    return {remote + name + "/", local + name + "/"};
  }
};

// The header files of a package lie beside what it brings; people want the latter.
bool IsOwnHeader(const std::string& folder, std::string_view name) {
  return name == HeaderFileOf(folder, false) || name == HeaderFileOf(folder, true);
}

std::string_view WithoutSlash(std::string_view path) {
  return path.ends_with('/') ? path.substr(0, path.size() - 1) : path;
}

bool IsItselfOrParent(std::string_view name) { return name == "." || name == ".."; }

// Nothing else can be fetched either, or kept.
bool EndsTheWalk(const TransferResult& failure) {
  switch (failure.code) {
    case result::kFileWrite:
      return failure.systemError == ENOSPC || failure.systemError == EDQUOT;
    case result::kNotEncodable:
      return failure.systemError == ENOMEM;
    case result::kConnection:
    case result::kAuthentication:
      return true;
    default:
      return false;
  }
}

TransferResult ResultOf(const SessionResult& failed, const std::string& path) {
  // Without a session there is a text's id instead of a code.
  constexpr std::uint32_t kHighestCode = 65535;
  const bool noSession = failed.end == SessionResult::End::NoLogin ||
                         (failed.report > result::WithoutSign(result::kNotImplemented) &&
                          failed.report < kHighestCode);
  return {noSession ? result::kAuthentication : -static_cast<int>(failed.report), 0, path};
}

// A child without a path has never stood for a file; a stopped one may have all of its file.
bool ChildIsOutstanding(const TransferRecord& child) {
  const bool complete =
      child.state == TransferState::Stopped && child.totalBytes == child.doneBytes;
  return !complete && !child.RemotePath().empty();
}

class Walk {
 public:
  Walk(TransferTask& task, FileTransfers& transfers) : task_(task), transfers_(transfers) {}

  TransferResult Run();

 private:
  void Folder(const WalkPlace& place);
  void Entry(const WalkPlace& place, const DirectoryEntry& entry);
  void File(const WalkPlace& place, const DirectoryEntry& entry);
  void Count(const DirectoryList& entries);
  void MoveChild();
  bool ReadyChild();
  void Fail(TransferResult failure);
  bool Ended() const {
    return ended_ || transfers_.Stopping() || task_.record->state == TransferState::Stopped;
  }

  TransferTask& task_;
  FileTransfers& transfers_;
  std::string name_;  // the folder's own
  bool atTop_ = true;
  TransferResult first_;
  bool ended_ = false;
  bool listerGone_ = false;
};

TransferResult Walk::Run() {
  const RecordPaths root = task_.record->Paths();
  const std::string_view path = WithoutSlash(root.remotePath);
  name_ = path.substr(path.rfind('/') + 1);
  task_.WalkBegins();
  if (ChildIsOutstanding(*task_.childRecord) && ReadyChild()) {
    MoveChild();
  }
  if (!Ended() && !MakeFolder(root.localPath)) {
    Fail({result::kFileOpen, errno, root.localPath});
  } else {
    Folder({root.remotePath + "/", root.localPath + "/"});
  }
  if (!Ended()) {
    task_.WalkEnds();
  }
  const bool good = first_.code == result::kOk;
  if (!listerGone_ && !transfers_.Stopping() &&
      task_.record->SetStateUnlessStopped(good ? TransferState::Finished : TransferState::Failed)) {
    task_.childRecord->state = good ? TransferState::Finished : TransferState::Failed;
  }
  return first_;
}

void Walk::Folder(const WalkPlace& place) {
  if (Ended()) {
    return;
  }
  ListingAnswer listing = transfers_.List(place.remote);
  if (listing.result.end == SessionResult::End::Cancelled) {
    listerGone_ = true;
    ended_ = true;
  } else if (!listing.result.Done()) {
    Fail(ResultOf(listing.result, place.remote));
  }
  const bool top = std::exchange(atTop_, false);
  std::erase_if(listing.entries, [&](const DirectoryEntry& entry) {
    return IsItselfOrParent(entry.name) || (top && IsOwnHeader(name_, entry.name));
  });
  Count(listing.entries);
  for (const DirectoryEntry& entry : listing.entries) {
    if (Ended()) {
      return;
    }
    Entry(place, entry);
  }
}

void Walk::Count(const DirectoryList& entries) {
  std::uint32_t files = 0;
  std::uint64_t bytes = 0;
  for (const DirectoryEntry& entry : entries) {
    if (entry.type == kEntryFile) {
      ++files;
      bytes += entry.size;
    }
  }
  task_.FilesListed(files, bytes);
}

void Walk::Entry(const WalkPlace& place, const DirectoryEntry& entry) {
  const bool folder = entry.type == kEntryFolder;
  if (!folder && entry.type != kEntryFile) {
    return;
  }
  // The "/" behind a folder's name bounds the depth: each level takes two bytes of 260.
  if (!IsSafeName(entry.name) || !place.Fits(folder ? entry.name + "/" : entry.name)) {
    Fail({result::kBadCharacters, 0, place.remote + entry.name});
  } else if (!folder) {
    File(place, entry);
  } else if (const std::string local = place.local + entry.name; MakeFolder(local)) {
    Folder(place.Inside(entry.name));
  } else {
    Fail({result::kFileOpen, errno, local});
  }
}

void Walk::File(const WalkPlace& place, const DirectoryEntry& entry) {
  const std::string localPath = place.local + entry.name;
  task_.childRecord->StartFile({place.remote + entry.name, localPath});
  const bool there =
      LocalFileSize(localPath) == entry.size && (entry.size != 0 || PathExists(localPath));
  if (there) {
    task_.FileIsThere(entry.size);
  } else if (ReadyChild()) {
    MoveChild();
  }
}

// Takes the counts of a child that ended Finished up into the folder record.
void Walk::MoveChild() {
  TransferResult ended = transfers_.Move(*task_.childRecord);
  if (task_.childRecord->state == TransferState::Finished) {
    task_.TakeUpFile(*task_.childRecord);
  } else if (ended.code != result::kOk) {
    Fail(std::move(ended));
  }
}

// Somebody may stop the task while the child is made ready: the task is stopped before its child,
// so looking at the task behind the child's change misses nothing.
bool Walk::ReadyChild() {
  task_.childRecord->state = TransferState::Queued;
  if (task_.record->state == TransferState::Stopped) {
    task_.childRecord->state = TransferState::Stopped;
    return false;
  }
  return true;
}

void Walk::Fail(TransferResult failure) {
  ended_ = ended_ || EndsTheWalk(failure);
  if (first_.code == result::kOk) {
    first_ = std::move(failure);
  }
}

}  // namespace

TransferResult RunFolderTask(TransferTask& task, FileTransfers& transfers) {
  return Walk(task, transfers).Run();
}

}  // namespace updown
