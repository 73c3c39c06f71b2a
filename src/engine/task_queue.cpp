#include "engine/task_queue.h"

#include <utility>

namespace updown {

void TaskQueue::Append(TaskPointer task) {
  if (task->id == 0) {
    task->id = NewTaskId();
  }
  const TaskId id = task->id;
  const std::lock_guard lock(queueLock_);
  if (task->record) {
    const bool kept = task->record->keepAcrossRestart != 0;
    // Of more headers the scheduler learns when the worker of one ends.
    if (kept || readyHeaders_.empty()) {
      news_.Set();
    }
    ReadyOf(*task).insert_or_assign(id, task);
    if (kept) {
      kept_.insert_or_assign(id, task);
    }
  }
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
  kept_.erase(id);
  readyForUser_.erase(id);
  readyHeaders_.erase(id);
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

TaskQueue::Ready& TaskQueue::ReadyOf(const TransferTask& task) {
  return task.record->keepAcrossRestart != 0 ? readyForUser_ : readyHeaders_;
}

TaskQueue::Ready::iterator TaskQueue::FirstOf(Ready& ready) {
  for (auto entry = ready.begin(); entry != ready.end();) {
    const TransferTask& task = *entry->second;
    if (task.record->state != TransferState::Queued) {
      entry = ready.erase(entry);
    } else if (task.Running()) {
      ++entry;  // its last run is about to end
    } else {
      return entry;
    }
  }
  return ready.end();
}

TaskPointer TaskQueue::TakeFirst(Ready& ready) {
  const auto first = FirstOf(ready);
  return first == ready.end() ? nullptr : ready.extract(first).mapped();
}

TaskPointer TaskQueue::NextRunnableTask(bool headersToo) {
  const std::lock_guard lock(queueLock_);
  TaskPointer task = TakeFirst(readyForUser_);
  return task || !headersToo ? task : TakeFirst(readyHeaders_);
}

bool TaskQueue::UserTaskWaits() {
  const std::lock_guard lock(queueLock_);
  return FirstOf(readyForUser_) != readyForUser_.end();
}

void TaskQueue::MakeReady(TaskId id) {
  const std::lock_guard lock(queueLock_);
  const auto found = places_.find(id);
  if (found != places_.end() && (*found->second)->record->state == TransferState::Queued) {
    const TaskPointer& task = *found->second;
    ReadyOf(*task).insert_or_assign(id, task);
    news_.Set();
  }
}

void TaskQueue::PutBack(const TaskPointer& task) {
  const std::lock_guard lock(queueLock_);
  if (places_.contains(task->id)) {
    ReadyOf(*task).insert_or_assign(task->id, task);
  }
}

void TaskQueue::AddEnding(TaskPointer task) {
  const std::lock_guard lock(queueLock_);
  endings_.push_back(std::move(task));
  news_.Set();
}

bool TaskQueue::HasEndings() const {
  const std::lock_guard lock(queueLock_);
  return !endings_.empty();
}

TaskPointer TaskQueue::TakeEnding() {
  const std::lock_guard lock(queueLock_);
  if (endings_.empty()) {
    return nullptr;
  }
  TaskPointer task = std::move(endings_.front());
  endings_.pop_front();
  return task;
}

void TaskQueue::EndRuns() {
  while (const TaskPointer task = TakeEnding()) {
    task->EndRun();
    MakeReady(task->id);
  }
}

void TaskQueue::StopRunningTasks() {
  const std::lock_guard lock(queueLock_);
  for (const TaskPointer& task : tasks_) {
    if (task->record && task->Running()) {
      task->Stop();
    }
  }
}

void TaskQueue::Clear() {
  const std::lock_guard lock(queueLock_);
  kept_.clear();
  readyForUser_.clear();
  readyHeaders_.clear();
  places_.clear();
  tasks_.clear();
}

}  // namespace updown
