#include "engine/transfer_task.h"

#include <atomic>
#include <utility>

namespace updown {
namespace {

void Forget(TransferRecord& record) {
  record.doneBytes = 0;
  record.unsyncedBytes = 0;
  record.totalBytes = 0;
  record.remoteTime = 0;
}

}  // namespace

TaskId NewTaskId() {
  static std::atomic<TaskId> last{0};
  return ++last;
}

std::shared_ptr<TaskRun> TransferTask::BeginRun(SocketGroup* workers) {
  const std::lock_guard lock(runLock_);
  run_ = std::make_shared<TaskRun>(workers);
  return run_;
}

void TransferTask::EndRun() {
  std::unique_lock lock(runLock_);
  while (whenEnded_) {
    const auto work = std::exchange(whenEnded_, nullptr);
    lock.unlock();
    work();
    lock.lock();
  }
  run_.reset();
}

std::shared_ptr<TaskRun> TransferTask::Run() const {
  const std::lock_guard lock(runLock_);
  return run_;
}

void TransferTask::WhenEnded(std::function<void()> work) {
  {
    const std::lock_guard lock(runLock_);
    if (run_) {
      whenEnded_ = std::move(work);
      return;
    }
  }
  work();
}

// The record first: a worker that finds its child stopped must find the whole task stopped.
bool TransferTask::Stop() {
  if (!record->ChangeState(TransferState::Queued, TransferState::Stopped)) {
    return false;
  }
  if (childRecord) {
    childRecord->state = TransferState::Stopped;
  }
  return true;
}

void TransferTask::QueueAgain() {
  record->resultCode = 0;
  record->systemError = 0;
  if (childRecord) {
    childRecord->state = TransferState::Queued;
  }
  record->state = TransferState::Queued;
}

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

void TransferTask::ForgetProgress() {
  const std::lock_guard lock(countLock_);
  Forget(*record);
  if (childRecord) {
    Forget(*childRecord);
  }
}

}  // namespace updown
