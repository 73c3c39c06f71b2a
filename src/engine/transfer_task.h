#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

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

  // A run lasts from BeginRun, by the scheduler, to EndRun on its worker, or the last of several.
  // `workers` as in TaskRun. Null, beginning nothing, if one is under way.
  std::shared_ptr<TaskRun> BeginRun(SocketGroup* workers = nullptr);
  // First does what the calls below have left for it, on the calling thread. The task may be Queued
  // then: its queue is to be told.
  void EndRun();
  bool Running() const { return Run() != nullptr; }
  std::shared_ptr<TaskRun> Run() const;  // null while none is under way

  // What the user wants, on the main thread; none of them waits.
  //
  // Queued becomes Stopped, the child's too, and no more queueing follows the run's end. False if
  // the state was another one.
  bool Stop();
  // To be fetched once more, with nothing left of how the last run ended: now, or behind the end of
  // the run under way. Nothing if it is Queued.
  void QueueAgain();
  // `work` is done at the end of the run under way, once; in the place of what it was given before.
  // True if there was none: then one has been begun, and the caller has to see to its EndRun.
  // `again`: the task is Queued behind it, and at once where no worker stands in the way.
  bool ClearAtEnd(std::function<void()> work, bool again);

  // The files that a folder has open or half fetched, a record each: the child, which the list
  // stores, and those of AddFile, which last as long as the process. Any thread.
  std::vector<std::shared_ptr<TransferRecord>> Files() const;
  std::shared_ptr<TransferRecord> AddFile();

  // As TransferRecord::MoveRemotePath, for all records.
  bool MoveRemotePath(const std::string& from, const std::string& to);

  // doneBytes of the record, plus those of the files of a folder.
  std::uint32_t Bytes() const;
  // Any thread.
  TaskProgress Progress() const;

  // What the walk of a folder tells, on the threads of its workers. Until a walk has come to its
  // end, what an earlier one has found keeps the progress from stepping back.
  void WalkBegins();
  void WalkEnds();
  void FilesListed(std::uint32_t files, std::uint64_t bytes);
  void FileIsThere(std::uint32_t bytes);  // from before
  // Adds the counts of the file, which is whole, to the record's, and its record stands for no file
  // any more; in one step for Bytes() and Progress(). A file that has not been `listed` by this
  // walk is counted when it is.
  void TakeUpFile(TransferRecord& file, bool listed);
  // As if nothing had ever been fetched.
  void ForgetProgress();

 private:
  void SetQueued();
  TaskProgress CountFolder() const;
  std::uint64_t BytesOfFiles() const;

  mutable std::mutex countLock_;  // guards what a folder's files add up to
  std::vector<std::shared_ptr<TransferRecord>> otherFiles_;
  TaskProgress walked_;         // by the walk under way, without what its open files have so far
  TaskProgress earlier_;        // before it began
  mutable std::mutex runLock_;  // guards what follows
  std::shared_ptr<TaskRun> run_;
  std::function<void()> clearing_;
  bool again_ = false;
};

using TaskPointer = std::shared_ptr<TransferTask>;

// A new number for a task. Any thread.
TaskId NewTaskId();

}  // namespace updown
