#include "localdata/transfer_record.h"

#include <algorithm>
#include <utility>

#include "localdata/file_names.h"

namespace updown {

TransferRecord::TransferRecord(const StoredRecord& stored)
    : recordId(stored.recordId),
      parentRecordId(stored.parentRecordId),
      isFolder(stored.isFolder),
      direction(stored.direction),
      state(stored.state),
      totalBytes(stored.totalBytes),
      doneBytes(stored.doneBytes),
      remoteTime(stored.remoteTime),
      resultCode(stored.resultCode),
      systemError(stored.systemError),
      paths_(stored.paths) {}

RecordPaths TransferRecord::Paths() const {
  const std::lock_guard lock(pathLock_);
  return paths_;
}

std::string TransferRecord::LocalPath() const {
  const std::lock_guard lock(pathLock_);
  return paths_.localPath;
}

std::string TransferRecord::RemotePath() const {
  const std::lock_guard lock(pathLock_);
  return paths_.remotePath;
}

void TransferRecord::SetLocalPath(std::string path) {
  const std::lock_guard lock(pathLock_);
  paths_.localPath = std::move(path);
}

void TransferRecord::StartFile(RecordPaths paths) {
  const std::lock_guard lock(pathLock_);
  totalBytes = 0;
  doneBytes = 0;
  unsyncedBytes = 0;
  remoteTime = 0;
  paths_ = std::move(paths);
}

void TransferRecord::SetPaths(RecordPaths paths) {
  const std::lock_guard lock(pathLock_);
  paths_ = std::move(paths);
}

bool TransferRecord::MoveRemotePath(std::string_view from, std::string_view to) {
  const std::lock_guard lock(pathLock_);
  const std::string_view path = paths_.remotePath;
  if (!path.starts_with(from) || (path.size() > from.size() && path[from.size()] != '/')) {
    return false;
  }
  std::string moved = std::string(to).append(path.substr(from.size()));
  if (!FitsPath(moved)) {
    return false;
  }
  paths_.remotePath = std::move(moved);
  return true;
}

bool TransferRecord::ChangeState(TransferState from, TransferState to) {
  return state.compare_exchange_strong(from, to);
}

bool TransferRecord::SetStateUnlessStopped(TransferState to) {
  TransferState present = state.load();
  while (present != TransferState::Stopped) {
    if (state.compare_exchange_weak(present, to)) {
      return true;
    }
  }
  return false;
}

StoredRecord TransferRecord::Store() const {
  StoredRecord stored;
  stored.direction = direction;
  stored.recordId = recordId;
  stored.parentRecordId = parentRecordId;
  stored.isFolder = isFolder;
  stored.state = state;
  stored.resultCode = resultCode;
  stored.systemError = systemError;
  // Under the lock, so that no file's paths meet another one's counts.
  const std::lock_guard lock(pathLock_);
  stored.paths = paths_;
  stored.totalBytes = totalBytes;
  stored.remoteTime = remoteTime;
  // Last: a download that starts over clears it before it takes up the new size and time.
  const std::uint32_t done = doneBytes;
  stored.doneBytes = done - std::min(done, unsyncedBytes.load());
  return stored;
}

}  // namespace updown
