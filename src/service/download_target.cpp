#include "service/download_target.h"

#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "localdata/files.h"

namespace updown {

namespace {

constexpr std::uint64_t kAllocationUnit = 512;  // of st_blocks

int ErrorOf(int result) { return result == 0 ? 0 : errno; }

}  // namespace

int DownloadTarget::Open(std::string path) {
  path_ = std::move(path);
  file_ = OpenLocalFile(path_, OpenMode::ReadWrite, FileDisposition::OpenAlways);
  synced_ = Clock::now();
  if (!file_) {
    return errno;
  }
  // One file may have two paths, and two clients may write to one place. Some file systems have no
  // locks.
  if (flock(file_.Get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    file_.Reset();
    return EBUSY;
  }
  return 0;
}

std::int64_t DownloadTarget::Size() const { return FileSize(file_.Get()); }

int DownloadTarget::CheckRoom(std::uint32_t size, std::uint32_t offset) const {
  struct stat status {};
  struct statvfs disk {};
  // A file system that tells nothing about its size is tried out.
  if (fstat(file_.Get(), &status) != 0 || fstatvfs(file_.Get(), &disk) != 0 || disk.f_blocks == 0) {
    return 0;
  }
  const std::uint64_t given = static_cast<std::uint64_t>(status.st_blocks) * kAllocationUnit;
  const std::uint64_t there = std::max<std::uint64_t>(given, offset);
  const std::uint64_t wanted = size > there ? size - there : 0;
  const std::uint64_t room = static_cast<std::uint64_t>(disk.f_bavail) * disk.f_frsize;
  return wanted > room ? ENOSPC : 0;
}

int DownloadTarget::Write(std::span<const std::uint8_t> bytes, std::uint32_t offset) {
  while (!bytes.empty()) {
    const ssize_t written =
        pwrite(file_.Get(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (written < 0 && errno == EINTR) {
      continue;
    }
    if (written < 1) {
      return written == 0 ? EIO : errno;
    }
    bytes = bytes.subspan(static_cast<std::size_t>(written));
    offset += static_cast<std::uint32_t>(written);
  }
  return 0;
}

int DownloadTarget::Sync(Clock::time_point now) {
  synced_ = now;
  const int error = ErrorOf(fdatasync(file_.Get()));
  // Not every file system has it.
  return error == EINVAL || error == ENOSYS ? 0 : error;
}

int DownloadTarget::CheckPlace() const {
  struct stat written {};
  struct stat named {};
  if (fstat(file_.Get(), &written) != 0 || stat(path_.c_str(), &named) != 0) {
    return errno;
  }
  const bool same = written.st_dev == named.st_dev && written.st_ino == named.st_ino;
  return same ? 0 : ESTALE;
}

int DownloadTarget::CutTo(std::uint32_t size) {
  if (Size() <= static_cast<std::int64_t>(size)) {
    return 0;
  }
  return ErrorOf(ftruncate(file_.Get(), static_cast<off_t>(size)));
}

}  // namespace updown
