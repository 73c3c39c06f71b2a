#include "engine/folder_walk.h"

#include "localdata/file_names.h"
#include "localdata/files.h"
#include "platform/folders.h"

namespace updown {
namespace {

// A folder on both sides, each path ending in "/".
struct WalkPlace {
  std::string remote;
  std::string local;

  bool Fits(std::string_view name) const {
    return FitsPath(remote + std::string(name)) && FitsPath(local + std::string(name));
  }
};

// Somebody may stop the task while the child is made ready: the task is stopped before its child,
// so looking at the task behind the child's change misses nothing.
bool ReadyChild(TransferTask& task) {
  task.childRecord->state = TransferState::Queued;
  if (task.record->state == TransferState::Stopped) {
    task.childRecord->state = TransferState::Stopped;
    return false;
  }
  return true;
}

int FetchFile(TransferTask& task, const ChildFetcher& fetchChild, const WalkPlace& place,
              const DirectoryEntry& entry) {
  const std::string localPath = place.local + entry.name;
  task.childRecord->StartFile({place.remote + entry.name, localPath});
  if (LocalFileSize(localPath) == entry.size || !ReadyChild(task)) {
    return result::kOk;
  }
  return fetchChild();
}

int OutcomeOf(const SessionResult& failed) {
  return failed.end == SessionResult::End::Cancelled ? kListerGone
                                                     : -static_cast<int>(failed.report);
}

}  // namespace

int FolderWalk(SchedulerContext& context, TransferTask& task, const ChildFetcher& fetchChild,
               const std::string& relativeLocal, const std::string& relativeRemote) {
  const RecordPaths root = task.record->Paths();
  const WalkPlace place{root.remotePath + "/" + relativeRemote,
                        root.localPath + "/" + relativeLocal};
  if (!place.Fits("")) {
    return result::kNotEncodable;
  }
  const ListingAnswer listing = context.session->List(place.remote, {});
  if (!listing.result.Done()) {
    return OutcomeOf(listing.result);
  }
  int outcome = result::kOk;
  for (const DirectoryEntry& entry : listing.entries) {
    if (outcome != result::kOk || task.record->state == TransferState::Stopped) {
      break;
    }
    if (!IsSafeName(entry.name)) {
      continue;
    }
    // The "/" behind a folder's name bounds the depth: each level takes two bytes of 260.
    if (entry.type == kEntryFile && place.Fits(entry.name)) {
      outcome = FetchFile(task, fetchChild, place, entry);
    } else if (entry.type == kEntryFolder && place.Fits(entry.name + "/")) {
      MakeFolder(place.local + entry.name);
      outcome = FolderWalk(context, task, fetchChild, relativeLocal + entry.name + "/",
                           relativeRemote + entry.name + "/");
    }
  }
  return outcome;
}

}  // namespace updown
