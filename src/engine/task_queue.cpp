#include "engine/task_queue.h"

#include <utility>

namespace updown {

void TaskQueue::Append(TaskPointer task) {
  if (task->id == 0) {
    task->id = NewTaskId();
  }
  const TaskId id = task->id;
  const std::lock_guard lock(queueLock_);
  places_.insert_or_assign(id, tasks_.insert(tasks_.end(), std::move(task)));
}

TaskPointer TaskQueue::Remove(TaskId id) {
  const std::lock_guard lock(queueLock_);
  const auto found = places_.find(id);
  if (found == places_.end()) {
    return nullptr;
  }
  TaskPointer removed = std::move(*found->second);
  tasks_.erase(found->second);
  places_.erase(found);
  return removed;
}

TaskPointer TaskQueue::Find(TaskId id) const {
  const std::lock_guard lock(queueLock_);
  const auto found = places_.find(id);
  return found == places_.end() ? nullptr : *found->second;
}

bool TaskQueue::Empty() const {
  const std::lock_guard lock(queueLock_);
  return tasks_.empty();
}

TaskPointer TaskQueue::NextRunnableTask() const {
  const std::lock_guard lock(queueLock_);
  for (const TaskPointer& task : tasks_) {
    if (task->record && task->record->state == TransferState::Queued && !task->Running() &&
        !task->WorkerActive()) {
      return task;
    }
  }
  return nullptr;
}

void TaskQueue::StopRunningTasks() {
  const std::lock_guard lock(queueLock_);
  for (const TaskPointer& task : tasks_) {
    if (!task->record || !(task->Running() || task->WorkerActive())) {
      continue;
    }
    // The record first: a worker that finds its child stopped must find the whole task stopped.
    if (task->record->ChangeState(TransferState::Queued, TransferState::Stopped) &&
        task->childRecord) {
      task->childRecord->state = TransferState::Stopped;
    }
  }
}

void TaskQueue::Clear() {
  const std::lock_guard lock(queueLock_);
  places_.clear();
  tasks_.clear();
}

}  // namespace updown
