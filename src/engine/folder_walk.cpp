#include "engine/folder_walk.h"

#include <climits>

#include "engine/task_store.h"
#include "engine/worker.h"
#include "localdata/files.h"
#include "platform/folders.h"

namespace updown {
namespace {

// A folder on both sides, each path ending in "/".
struct WalkPlace {
  std::string remote;
  std::string local;

  bool Fits(std::string_view name) const {
    return remote.size() + name.size() < kPathCapacity &&
           local.size() + name.size() < kPathCapacity;
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

int FetchFile(SchedulerContext& context, TransferTask& task, TransferProgress& progress,
              const WalkPlace& place, const DirectoryEntry& entry) {
  const std::string localPath = place.local + entry.name;
  task.childRecord->StartFile({place.remote + entry.name, localPath});
  if (LocalFileSize(localPath) == entry.size || !ReadyChild(task)) {
    return result::kOk;
  }
  return TransferChild(context, task, progress);
}

int OutcomeOf(const SessionResult& failed) {
  return failed.end == SessionResult::End::Cancelled ? kListerGone
                                                     : -static_cast<int>(failed.report);
}

}  // namespace

bool IsSafeName(std::string_view name) {
  return !name.empty() && name != "." && name != ".." && name.size() <= NAME_MAX &&
         name.find_first_of(std::string_view("/\\\0", 3)) == std::string_view::npos;
}

int FolderWalk(SchedulerContext& context, TransferTask& task, TransferProgress& progress,
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
      outcome = FetchFile(context, task, progress, place, entry);
    } else if (entry.type == kEntryFolder && place.Fits(entry.name + "/")) {
      MakeFolder(place.local + entry.name);
      outcome = FolderWalk(context, task, progress, relativeLocal + entry.name + "/",
                           relativeRemote + entry.name + "/");
    }
  }
  return outcome;
}

}  // namespace updown
