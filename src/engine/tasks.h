#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "engine/launch_state.h"
#include "engine/record_index.h"
#include "localdata/transfer_record.h"
#include "platform/chain.h"
#include "platform/window.h"

namespace updown {

inline constexpr std::uint32_t kStreamLimit = 5;   // unfinished user tasks at a time
inline constexpr std::size_t kPathCapacity = 260;  // bytes or characters, terminator included

// Names a task in messages and rows. Never reused in a process, so that a message about a task
// that is gone finds nothing. 0 names none.
using TaskId = std::uintptr_t;

// One thing to fetch: the node of the queue that the scheduler and a worker run.
//
// The scheduler's worker holds the task alive; the queue owns it. Texts and record pointers do not
// change while a worker runs, except `sessid`, which Resume and Redo replace between two runs.
class TransferTask {
 public:
  TaskId id = 0;
  WindowHandle ownerWindow;  // the frame; the worker posts to it
  std::string serverName;
  std::string displayName;  // on a draft: the file name to suggest; empty on a queued task
  std::uint32_t serverPort = kDefaultServerPort;
  bool isFolder = false;
  std::int32_t lastResult = 0;  // main thread: last code that the status window took in, positive
  std::shared_ptr<TransferRecord> record;
  std::shared_ptr<TransferRecord> childRecord;  // folder tasks only
  std::shared_ptr<TransferTask> next;           // guarded by queueLock

  std::string Sessid() const;
  void SetSessid(std::string sessid);

  // A run lasts from the scheduler's BeginRun to the worker's EndRun. Resume and Redo clear the
  // flag earlier; the end of a run that was so cut off does not touch the run that followed it.
  bool Running() const { return running_.load(); }
  std::uint32_t BeginRun();
  void EndRun(std::uint32_t run);
  void ClearRunning();

  // From BeginRun to EndRun, whatever Resume and Redo do to the flag: a task never has two workers.
  bool WorkerActive() const { return workerActive_.load(); }

  // doneBytes of the record, plus those of the child when there is one.
  std::uint32_t Bytes() const;
  // Adds the finished child's counts to the record's and zeroes them, in one step for Bytes().
  void TakeUpChild();

 private:
  mutable std::mutex sessidLock_;
  mutable std::mutex countLock_;
  std::string sessid_;
  std::atomic<bool> running_{false};
  std::atomic<bool> workerActive_{false};
  std::atomic<std::uint32_t> run_{0};
};

using TaskPointer = std::shared_ptr<TransferTask>;

// A new number for a task. Any thread.
TaskId NewTaskId();

// The queue as frame, scheduler and workers share it; a chain with new tasks at the tail. All calls
// take queueLock themselves and hold it for the scan alone.
class TaskQueue {
 public:
  // At the tail. A task without an id gets one.
  void Append(TaskPointer task);
  TaskPointer Remove(TaskId id);
  TaskPointer Find(TaskId id) const;
  bool Empty() const;

  // First task in order whose record exists, is Queued, and that neither runs nor has a worker.
  TaskPointer NextRunnableTask() const;
  // Queued becomes Stopped for each task that runs, children included.
  void StopRunningTasks();

  // Calls `visit` for each task in order, under queueLock: it must not call back into the queue.
  template <typename Visit>
  void ForEach(Visit visit) const {
    const std::lock_guard lock(queueLock_);
    for (TransferTask& task : tasks_) {
      visit(task);
    }
  }

  // Frees all tasks that no worker holds.
  void Clear();

 private:
  mutable std::mutex queueLock_;
  Chain<TransferTask, TaskPointer> tasks_;
  std::unordered_map<TaskId, TaskPointer> byId_;
};

// A task that is in no queue yet, with a record in no chain: how a view tells the frame what to
// fetch.
struct TaskDraft {
  std::string displayName;  // UTF-8 file name to suggest or to use
  std::string remotePath;   // UTF-8
  std::string sessid;
  std::string serverName;
  std::uint32_t serverPort = kDefaultServerPort;
};

// The frame's tasks and records. Main thread only; the queue inside has its own lock.
class TaskStore {
 public:
  TaskStore(std::shared_ptr<TaskQueue> queue, const LaunchState& launch);

  // For putting in the loaded list and for saving. Take it anew for each use: what is appended or
  // removed through a reference kept from earlier is not seen by the numbering.
  RecordChain& Records();
  const RecordChain& Records() const { return recordChain_; }
  TaskQueue& Queue() { return *queue_; }
  TaskPointer Find(TaskId id) const { return queue_->Find(id); }

  // Lowest positive number that no record of the chain uses.
  std::uint32_t NextRecordId() const;
  std::shared_ptr<TransferRecord> CreateRecord();
  TaskPointer CreateTask();

  // A task for `draft` with the target `localPath` (UTF-8), Queued. Null, with nothing made, if
  // the draft has no displayName, a path does not fit the buffers, or memory is short. The caller
  // wakes the scheduler.
  TaskPointer AddDownload(const TaskDraft& draft, const std::string& localPath, bool keep,
                          WindowHandle owner);

  // Duplicate tests of a wanted service path against the top records, "inside an existing folder"
  // included; without regard to the case of ASCII letters, one "/" at the end not counted. An empty
  // path is a duplicate.
  enum class DuplicateScope { EveryState, QueuedOnly };
  bool IsDuplicate(std::u16string_view wantedPath, DuplicateScope scope) const;

  // kStreamLimit or more tasks with keepAcrossRestart whose state is not Finished.
  bool StreamLimitReached() const;

  // Makes a task for each top record while the queue is empty, and posts kTaskAdded for each to
  // `owner`. Returns whether it did anything; the caller then wakes the scheduler. A record whose
  // number is 0 or taken by an earlier one gets a new number.
  bool RestoreTasks(const std::string& sessid, WindowHandle owner);

  // Takes the task out of the queue and its records out of the chain. What a running worker holds
  // lives on until the worker has ended.
  void RemoveTask(TaskId id);

 private:
  RecordIndex& Index() const;
  std::shared_ptr<TransferRecord> MakeRecord() const;
  void AppendRecord(const std::shared_ptr<TransferRecord>& record);
  void RenumberRecords();
  void RestoreTask(const std::shared_ptr<TransferRecord>& record,
                   const std::shared_ptr<TransferRecord>& child, const std::string& sessid,
                   WindowHandle owner);

  std::shared_ptr<TaskQueue> queue_;
  const LaunchState& launch_;
  RecordChain recordChain_;
  mutable RecordIndex index_;  // of recordChain_, rebuilt when stale
  mutable bool indexStale_ = true;
};

}  // namespace updown
