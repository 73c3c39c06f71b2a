#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "engine/launch_state.h"
#include "engine/task_id.h"
#include "localdata/transfer_record.h"

namespace updown {

// One thing to fetch: what the scheduler and a worker run.
//
// The scheduler's worker holds the task alive; the queue owns it. Texts and record pointers do not
// change while a worker runs, except `sessid`, which Resume and Redo replace between two runs.
class TransferTask {
 public:
  TaskId id = 0;
  std::string serverName;
  std::uint32_t serverPort = kDefaultServerPort;
  bool isFolder = false;
  std::int32_t lastResult = 0;  // main thread: last code that the status window took in, positive
  std::shared_ptr<TransferRecord> record;
  std::shared_ptr<TransferRecord> childRecord;  // folder tasks only

  std::string Sessid() const;
  void SetSessid(std::string sessid);

  // A run lasts from the scheduler's BeginRun to the worker's EndRun. Resume and Redo clear
  // Running() earlier; WorkerActive() stays until EndRun, so that a task never has two workers.
  void BeginRun();
  void EndRun();
  void ClearRunning();
  bool Running() const { return running_.load(); }
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
};

using TaskPointer = std::shared_ptr<TransferTask>;

// A new number for a task. Any thread.
TaskId NewTaskId();

}  // namespace updown
