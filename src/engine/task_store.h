#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/launch_state.h"
#include "engine/record_index.h"
#include "engine/task_queue.h"
#include "localdata/file_names.h"
#include "localdata/transfer_record.h"

namespace updown {

inline constexpr std::uint32_t kStreamLimit = 5;  // unfinished user tasks at a time

// What a window asks to fetch, before there is a task for it.
struct TaskDraft {
  std::string displayName;  // UTF-8 file name to suggest or to use
  std::string remotePath;   // UTF-8
  std::string serverName;
  std::uint32_t serverPort = kDefaultServerPort;
};

// The program's tasks and records. Main thread only; the queue inside has its own lock.
class TaskStore {
 public:
  TaskStore(std::shared_ptr<TaskQueue> queue, const LaunchState& launch);

  // Those of what the user asked for, in the order of the list file; fetches of headers have their
  // records with their tasks alone.
  const RecordList& Records() const { return records_; }
  TaskQueue& Queue() { return *queue_; }
  TaskPointer Find(TaskId id) const { return queue_->Find(id); }

  // Lowest positive number that no record uses.
  std::uint32_t NextRecordId() const;

  // A record of the stored list; it is kept from now on. RestoreTasks makes the tasks.
  void AddStoredRecord(const std::shared_ptr<TransferRecord>& record);

  // A task for `draft` with the target `localPath` (UTF-8), Queued. Null, with nothing made, if
  // the draft has no displayName or a path does not fit the buffers. What is not to be kept is a
  // header file that the program fetches for itself; adding and removing one costs the same
  // however many there are.
  TaskPointer AddDownload(const TaskDraft& draft, const std::string& localPath, bool keep);

  // A task for all that is below the service's folder `draft.remotePath`, Queued, to be kept;
  // `localFolder` (UTF-8) and what is missing below it is made. A package's own header files are
  // left out. Null as above.
  TaskPointer AddFolderDownload(const TaskDraft& draft, const std::string& localFolder);

  // Whether the user has the wanted service path among the top records of any state, "inside an
  // existing folder" included; without regard to the case of ASCII letters, one "/" at the end not
  // counted. What the program fetches for itself does not count. An empty path is a duplicate.
  bool IsDuplicate(std::string_view wantedPath) const;

  // The service has renamed the folder `oldPath`: what the user asked for that is not Finished and
  // has its service path there, or below, gets the new one, unless that does not fit. The tasks
  // whose path changed. A file that is being fetched uses it from its next block on, a folder for
  // its open files; what its listings have brought keeps the old path up to the next start.
  std::vector<TaskId> FollowRename(const std::string& oldPath, const std::string& newPath);

  // kStreamLimit or more tasks with keepAcrossRestart whose state is not Finished.
  bool StreamLimitReached() const;

  // Makes a task for each top record while the queue is empty, and calls `announce` for each before
  // a worker can know it. Returns whether it did anything. A record whose number is 0 or taken by
  // an earlier one gets a new number. Of several with one target, as a damaged list may have them,
  // only the first is left to run, and what is on the disk counts for none of them: the others are
  // Failed with result::kFileOpen and EEXIST.
  bool RestoreTasks(const std::function<void(TaskId)>& announce);

  // What the user does with a task. None of them waits or touches the disk: what has to follow the
  // end of a worker runs on that worker, else on a thread of the scheduler's. The last word counts,
  // but for a start from nothing: that stays one. A task that is gone is left alone.
  //
  // Queued becomes Stopped. The worker may bring the block in hand to its end, for a few seconds.
  void Pause(TaskId id);
  // Goes on where it stood. False, changing nothing, while another task that waits or runs has the
  // same target, or one around it or in it.
  bool Resume(TaskId id);
  // Starts over from nothing, without what is on the disk; a worker is cut first. False as above.
  bool Redo(TaskId id);

  // Takes the task out of the queue and its records out of the list; its worker is cut. What the
  // worker holds lives on until it has ended. With LocalFiles::Remove the target goes then too,
  // unless it has arrived whole.
  enum class LocalFiles { Keep, Remove };
  void RemoveTask(TaskId id, LocalFiles files = LocalFiles::Keep);

  // Whether a task that is not Finished, or one whose worker has yet to end, writes this file, the
  // folder around it, or below it.
  bool IsTargetInUse(const std::string& localPath) const;

  // At the program's end, when no worker runs any more.
  void Clear();

 private:
  RecordIndex& Index() const;
  std::shared_ptr<TransferRecord> MakeRecord() const;
  std::shared_ptr<TransferRecord> MakeTopRecord(const TaskDraft& draft,
                                                const std::string& localPath, bool keep);
  void AppendRecord(const std::shared_ptr<TransferRecord>& record);
  void RenumberRecords();
  TaskPointer AddTask(const TaskDraft& draft, const std::shared_ptr<TransferRecord>& record);
  TaskPointer MakeTask(const std::shared_ptr<TransferRecord>& record);
  std::shared_ptr<TransferRecord> MakeChild(const TransferRecord& folder);
  bool TakesTarget(TransferTask& task);
  void FailDoubledTargets(const std::vector<TaskPointer>& tasks);
  void EndOrCut(const TaskPointer& task, bool idle);
  void ForgetRecord(const std::shared_ptr<TransferRecord>& record);

  std::shared_ptr<TaskQueue> queue_;
  const LaunchState& launch_;
  RecordList records_;
  std::unordered_map<const TransferRecord*, RecordList::iterator> places_;  // in records_
  mutable RecordIndex index_;  // of records_, rebuilt when stale
  mutable bool indexStale_ = true;
  std::vector<std::weak_ptr<TransferTask>> leaving_;  // removed while their workers still ran
};

}  // namespace updown
