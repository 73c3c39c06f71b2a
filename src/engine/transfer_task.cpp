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
  if (run_) {
    return nullptr;
  }
  run_ = std::make_shared<TaskRun>(workers);
  return run_;
}

void TransferTask::EndRun() {
  std::unique_lock lock(runLock_);
  while (clearing_) {
    const auto work = std::exchange(clearing_, nullptr);
    lock.unlock();
    work();
    lock.lock();
  }
  if (std::exchange(again_, false)) {
    SetQueued();
  }
  run_.reset();
}

std::shared_ptr<TaskRun> TransferTask::Run() const {
  const std::lock_guard lock(runLock_);
  return run_;
}

// The record first: a worker that finds its child stopped must find the whole task stopped.
bool TransferTask::Stop() {
  const std::lock_guard lock(runLock_);
  again_ = false;
  if (!record->ChangeState(TransferState::Queued, TransferState::Stopped)) {
    return false;
  }
  if (childRecord) {
    childRecord->state = TransferState::Stopped;
  }
  return true;
}

void TransferTask::QueueAgain() {
  const std::lock_guard lock(runLock_);
  again_ = run_ && record->state != TransferState::Queued;
  if (!run_) {
    SetQueued();
  }
}

bool TransferTask::ClearAtEnd(std::function<void()> work, bool again) {
  const std::lock_guard lock(runLock_);
  clearing_ = std::move(work);
  if (run_) {
    again_ = again;
    return false;
  }
  run_ = std::make_shared<TaskRun>(nullptr);
  if (again) {
    SetQueued();
  }
  return true;
}

void TransferTask::SetQueued() {
  record->resultCode = 0;
  record->systemError = 0;
  if (childRecord) {
    childRecord->state = TransferState::Queued;
  }
  record->state = TransferState::Queued;
}

std::uint32_t TransferTask::Bytes() const {
  const std::lock_guard lock(countLock_);
  const std::uint32_t bytes = record ? record->doneBytes.load() : 0;
  return bytes + static_cast<std::uint32_t>(BytesOfFiles());
}

std::uint64_t TransferTask::BytesOfFiles() const {
  std::uint64_t bytes = childRecord ? childRecord->doneBytes.load() : 0;
  for (const auto& file : otherFiles_) {
    bytes += file->doneBytes;
  }
  return bytes;
}

std::vector<std::shared_ptr<TransferRecord>> TransferTask::Files() const {
  const std::lock_guard lock(countLock_);
  std::vector<std::shared_ptr<TransferRecord>> files{childRecord};
  files.insert(files.end(), otherFiles_.begin(), otherFiles_.end());
  return files;
}

std::shared_ptr<TransferRecord> TransferTask::AddFile() {
  auto file = std::make_shared<TransferRecord>();
  file->parentRecordId = record->recordId;
  file->keepAcrossRestart = record->keepAcrossRestart;
  const std::lock_guard lock(countLock_);
  otherFiles_.push_back(file);
  return file;
}

bool TransferTask::MoveRemotePath(const std::string& from, const std::string& to) {
  bool moved = record->MoveRemotePath(from, to);
  if (childRecord) {
    for (const auto& file : Files()) {
      moved = file->MoveRemotePath(from, to) || moved;
    }
  }
  return moved;
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
  progress.doneBytes += BytesOfFiles();
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

void TransferTask::TakeUpFile(TransferRecord& file, bool listed) {
  const std::lock_guard lock(countLock_);
  if (listed) {
    ++walked_.doneFiles;
    walked_.doneBytes += file.doneBytes;
  }
  record->doneBytes += file.doneBytes;
  record->totalBytes += file.totalBytes;
  file.StartFile({});
}

void TransferTask::ForgetProgress() {
  const std::lock_guard lock(countLock_);
  walked_ = {};
  earlier_ = {};
  Forget(*record);
  otherFiles_.clear();
  if (childRecord) {
    childRecord->StartFile({});
  }
}

}  // namespace updown
