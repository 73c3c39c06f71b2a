#pragma once

#include "engine/task_id.h"
#include "service/transfer_result.h"

namespace updown {

// What the engine tells the program that holds it. Called on any thread, sometimes on several at
// once; of one task the start comes before all else and the end after all else of the same run.
// Calls return at once.
class EngineEvents {
 public:
  virtual ~EngineEvents() = default;

  virtual void TaskStarted(TaskId task) noexcept = 0;
  virtual void BlockDone(TaskId task) noexcept = 0;  // the task's byte counts have moved
  // The run waits before it makes a lost connection anew; a block, or the run's end, comes next.
  virtual void TaskWaiting(TaskId task) noexcept = 0;
  virtual void TaskEnded(TaskId task, const TransferResult& result) noexcept = 0;
  virtual void SaveNeeded() noexcept = 0;  // a record's state has changed for good
};

}  // namespace updown
