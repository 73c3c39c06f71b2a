#pragma once

#include <string>

#include "engine/task_store.h"

namespace updown {

// What the status window needs of the tasks that it shows. Main thread only.
class TransferTasks {
 public:
  virtual ~TransferTasks() = default;

  virtual TaskPointer Find(TaskId task) const = 0;
  virtual bool StreamLimitReached() const = 0;
  virtual bool IsTargetInUse(const std::string& localPath) const = 0;

  // As TaskStore does them; nothing is waited for.
  virtual void PauseTask(TaskId task) = 0;
  // False, and the user has been told, if another task has the same target.
  virtual bool ResumeTask(TaskId task) = 0;
  virtual bool RedoTask(TaskId task) = 0;
  // Its file or folder lies elsewhere from now on.
  virtual void MoveTask(TaskId task, const std::string& localPath) = 0;
  // With what of it lies on the disk, unless that is whole.
  virtual void DeleteTask(TaskId task) = 0;
};

}  // namespace updown
