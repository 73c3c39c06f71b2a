#include <utility>

#include "engine/task_store.h"

namespace updown {

TaskId NewTaskId() {
  static std::atomic<TaskId> last{0};
  return ++last;
}

std::string TransferTask::Sessid() const {
  const std::lock_guard lock(sessidLock_);
  return sessid_;
}

void TransferTask::SetSessid(std::string sessid) {
  const std::lock_guard lock(sessidLock_);
  sessid_ = std::move(sessid);
}

std::uint32_t TransferTask::BeginRun() {
  workerActive_ = true;
  const std::uint32_t run = ++run_;
  running_ = true;
  return run;
}

void TransferTask::EndRun(std::uint32_t run) {
  if (run_ == run) {
    running_ = false;
    workerActive_ = false;
  }
}

void TransferTask::ClearRunning() { running_ = false; }

std::uint32_t TransferTask::Bytes() const {
  const std::lock_guard lock(countLock_);
  std::uint32_t bytes = record ? record->doneBytes.load() : 0;
  if (childRecord) {
    bytes += childRecord->doneBytes.load();
  }
  return bytes;
}

void TransferTask::TakeUpChild() {
  const std::lock_guard lock(countLock_);
  record->doneBytes += childRecord->doneBytes;
  record->totalBytes += childRecord->totalBytes;
  childRecord->doneBytes = 0;
  childRecord->totalBytes = 0;
}

void TaskQueue::Append(TaskPointer task) {
  if (task->id == 0) {
    task->id = NewTaskId();
  }
  const std::lock_guard lock(queueLock_);
  byId_.insert_or_assign(task->id, task);
  tasks_.Append(std::move(task));
}

TaskPointer TaskQueue::Remove(TaskId id) {
  const std::lock_guard lock(queueLock_);
  const auto found = byId_.find(id);
  if (found == byId_.end()) {
    return nullptr;
  }
  TaskPointer removed = tasks_.Remove(found->second.get());
  byId_.erase(found);
  return removed;
}

TaskPointer TaskQueue::Find(TaskId id) const {
  const std::lock_guard lock(queueLock_);
  const auto found = byId_.find(id);
  return found == byId_.end() ? nullptr : found->second;
}

bool TaskQueue::Empty() const {
  const std::lock_guard lock(queueLock_);
  return tasks_.Empty();
}

TaskPointer TaskQueue::NextRunnableTask() const {
  const std::lock_guard lock(queueLock_);
  for (const TaskPointer* link = &tasks_.Head(); *link; link = &(*link)->next) {
    const TransferTask& task = **link;
    if (task.record && task.record->state == TransferState::Queued && !task.Running() &&
        !task.WorkerActive()) {
      return *link;
    }
  }
  return nullptr;
}

void TaskQueue::StopRunningTasks() {
  const std::lock_guard lock(queueLock_);
  for (TransferTask& task : tasks_) {
    if (!task.record || !(task.Running() || task.WorkerActive())) {
      continue;
    }
    // The record first: a worker that finds its child stopped must find the whole task stopped.
    if (task.record->ChangeState(TransferState::Queued, TransferState::Stopped) &&
        task.childRecord) {
      task.childRecord->state = TransferState::Stopped;
    }
  }
}

void TaskQueue::Clear() {
  const std::lock_guard lock(queueLock_);
  byId_.clear();
  tasks_.Clear();
}

}  // namespace updown
