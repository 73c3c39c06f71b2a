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
  virtual void RemoveTask(TaskId task) = 0;
  // What the stored list says of a task is out of date.
  virtual void TasksChanged() = 0;

  // What a task presents that starts from now on.
  virtual std::string Sessid() const = 0;

  // Lets the scheduler look for runnable tasks, once the caller's work is done.
  virtual void WakeScheduler() = 0;
};

}  // namespace updown
