#include "engine/folder_walk.h"

#include <cerrno>
#include <utility>

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
  void MoveChild();
  bool ReadyChild();
  void Fail(TransferResult failure);
  bool Ended() const {
    return ended_ || transfers_.Stopping() || task_.record->state == TransferState::Stopped;
  }

  TransferTask& task_;
  FileTransfers& transfers_;
  TransferResult first_;
  bool ended_ = false;
  bool listerGone_ = false;
};

TransferResult Walk::Run() {
  const RecordPaths root = task_.record->Paths();
  if (ChildIsOutstanding(*task_.childRecord) && ReadyChild()) {
    MoveChild();
  }
  if (!Ended() && !MakeFolder(root.localPath)) {
    Fail({result::kFileOpen, errno, root.localPath});
  } else {
    Folder({root.remotePath + "/", root.localPath + "/"});
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
  const ListingAnswer listing = transfers_.List(place.remote);
  if (listing.result.end == SessionResult::End::Cancelled) {
    listerGone_ = true;
    ended_ = true;
  } else if (!listing.result.Done()) {
    Fail(ResultOf(listing.result, place.remote));
  }
  for (const DirectoryEntry& entry : listing.entries) {
    if (Ended()) {
      return;
    }
    if (!IsItselfOrParent(entry.name)) {
      Entry(place, entry);
    }
  }
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
  if (!there && ReadyChild()) {
    MoveChild();
  }
}

// Takes the counts of a child that ended Finished up into the folder record.
void Walk::MoveChild() {
  TransferResult ended = transfers_.Move(*task_.childRecord);
  if (task_.childRecord->state == TransferState::Finished) {
    task_.TakeUpChild();
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
