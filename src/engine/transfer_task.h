#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "engine/launch_state.h"
#include "engine/task_id.h"
#include "engine/task_run.h"
#include "localdata/transfer_record.h"

namespace updown {

// How far a task is, for people. Of a folder the totals are those of the listings met so far.
struct TaskProgress {
  std::uint64_t doneBytes = 0;
  std::uint64_t totalBytes = 0;  // 0: not known yet
  std::uint32_t doneFiles = 0;
  std::uint32_t files = 0;  // 0: a single file, or a folder that has not been listed yet

  bool operator==(const TaskProgress&) const = default;
};

// One thing to fetch: what the scheduler and a worker run.
//
// The scheduler's worker holds the task alive; the queue owns it. Texts and record pointers do not
// change while a worker runs.
class TransferTask {
 public:
  TaskId id = 0;
  std::string serverName;
  std::uint32_t serverPort = kDefaultServerPort;
  bool isFolder = false;
  std::shared_ptr<TransferRecord> record;
  std::shared_ptr<TransferRecord> childRecord;  // folder tasks only

  // A run lasts from the scheduler's BeginRun to EndRun on its worker. `workers` as in TaskRun.
  std::shared_ptr<TaskRun> BeginRun(SocketGroup* workers = nullptr);
  // First does what WhenEnded was given, on the calling thread.
  void EndRun();
  bool Running() const { return Run() != nullptr; }
  std::shared_ptr<TaskRun> Run() const;  // null while none is under way

  // Calls `work` when the run under way has come to its end, on its worker; at once, on the calling
  // thread, if there is none. Only the last wish counts.
  void WhenEnded(std::function<void()> work);

  // Queued becomes Stopped, the child's too. False if the state was another one.
  bool Stop();
  // To be fetched once more, with nothing left of how the last run ended.
  void QueueAgain();

  // doneBytes of the record, plus those of the child when there is one.
  std::uint32_t Bytes() const;
  // Any thread.
  TaskProgress Progress() const;

  // What the walk of a folder tells, on the threads of its workers. Until a walk has come to its
  // end, what an earlier one has found keeps the progress from stepping back.
  void WalkBegins();
  void WalkEnds();
  void FilesListed(std::uint32_t files, std::uint64_t bytes);
  void FileIsThere(std::uint32_t bytes);  // from before
  // Adds the counts of the file, which is whole, to the record's and zeroes them, in one step for
  // Bytes() and Progress().
  void TakeUpFile(TransferRecord& file);
  // As if nothing had ever been fetched.
  void ForgetProgress();

 private:
  TaskProgress CountFolder() const;

  mutable std::mutex countLock_;  // guards what a folder's files add up to
  TaskProgress walked_;           // by the walk under way, without what its open files have so far
  TaskProgress earlier_;          // before it began
  mutable std::mutex runLock_;    // guards what follows
  std::shared_ptr<TaskRun> run_;
  std::function<void()> whenEnded_;
};

using TaskPointer = std::shared_ptr<TransferTask>;

// A new number for a task. Any thread.
TaskId NewTaskId();

}  // namespace updown
