#pragma once

#include <list>
#include <mutex>
#include <unordered_map>

#include "engine/transfer_task.h"

namespace updown {

// The queue as window, scheduler and workers share it, new tasks last. All calls take queueLock
// themselves and hold it for the scan alone.
class TaskQueue {
 public:
  // A task without an id gets one.
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
    for (const TaskPointer& task : tasks_) {
      visit(*task);
    }
  }

  // Frees all tasks that no worker holds.
  void Clear();

 private:
  using Tasks = std::list<TaskPointer>;

  mutable std::mutex queueLock_;
  Tasks tasks_;
  std::unordered_map<TaskId, Tasks::iterator> places_;
};

}  // namespace updown
