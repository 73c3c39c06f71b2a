#include "engine/transfer_task.h"

#include <utility>

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

void TransferTask::BeginRun() {
  workerActive_ = true;
  running_ = true;
}

void TransferTask::EndRun() {
  running_ = false;
  workerActive_ = false;
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

}  // namespace updown
