#include "engine/transfer_task.h"

#include <algorithm>
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

TaskProgress TransferTask::Progress() const {
  const std::lock_guard lock(countLock_);
  if (!isFolder) {
    return {record->doneBytes, record->totalBytes, 0, 0};
  }
  TaskProgress progress = CountFolder();
  if (progress.files == 0) {  // before the first listing the stored count is all there is
    progress.doneBytes += record->doneBytes;
  }
  return progress;
}

TaskProgress TransferTask::CountFolder() const {
  TaskProgress progress = walked_;
  if (childRecord) {
    progress.doneBytes += childRecord->doneBytes;
  }
  progress.doneBytes = std::max(progress.doneBytes, earlier_.doneBytes);
  progress.totalBytes = std::max(progress.totalBytes, earlier_.totalBytes);
  progress.doneFiles = std::max(progress.doneFiles, earlier_.doneFiles);
  progress.files = std::max(progress.files, earlier_.files);
  // A file that goes on where it stood may not have been listed yet.
  if (progress.totalBytes != 0) {
    progress.totalBytes = std::max(progress.totalBytes, progress.doneBytes);
  }
  return progress;
}

void TransferTask::WalkBegins() {
  const std::lock_guard lock(countLock_);
  earlier_ = CountFolder();
  walked_ = {};
}

void TransferTask::WalkEnds() {
  const std::lock_guard lock(countLock_);
  earlier_ = {};
}

void TransferTask::FilesListed(std::uint32_t files, std::uint64_t bytes) {
  const std::lock_guard lock(countLock_);
  walked_.files += files;
  walked_.totalBytes += bytes;
}

void TransferTask::FileIsThere(std::uint32_t bytes) {
  const std::lock_guard lock(countLock_);
  ++walked_.doneFiles;
  walked_.doneBytes += bytes;
}

void TransferTask::TakeUpFile(TransferRecord& file) {
  const std::lock_guard lock(countLock_);
  ++walked_.doneFiles;
  walked_.doneBytes += file.doneBytes;
  record->doneBytes += file.doneBytes;
  record->totalBytes += file.totalBytes;
  file.doneBytes = 0;
  file.totalBytes = 0;
}

void TransferTask::ForgetProgress() {
  const std::lock_guard lock(countLock_);
  walked_ = {};
  earlier_ = {};
  Forget(*record);
  if (childRecord) {
    Forget(*childRecord);
  }
}

}  // namespace updown
