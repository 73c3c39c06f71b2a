#include "platform/file_replacement.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

namespace updown {
namespace {

constexpr std::size_t kPiece = 65536;
constexpr mode_t kOwnerOnly = 0600;

// Some file systems cannot sync a folder. The file is whole and in place all the same.
void SyncFolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  const UniqueFd opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (opened) {
    fsync(opened.Get());
  }
}

// 0 or the error.
int WriteAll(int fd, std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(fd, bytes.data(), bytes.size());
    if (written > 0) {
      bytes = bytes.subspan(static_cast<std::size_t>(written));
    } else if (written == 0) {
      return ENOSPC;
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

}  // namespace

FileReplacement::FileReplacement(std::string path)
    : path_(std::move(path)), temporaryPath_(path_ + ".tmp") {
  gathered_.reserve(kPiece);
  unlink(temporaryPath_.c_str());
  file_.Reset(open(temporaryPath_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kOwnerOnly));
  error_ = file_ ? 0 : errno;
}

FileReplacement::~FileReplacement() {
  if (file_) {
    unlink(temporaryPath_.c_str());
  }
}

void FileReplacement::Write(std::span<const std::uint8_t> bytes) {
  if (gathered_.size() + bytes.size() > kPiece) {
    Flush();
  }
  gathered_.insert(gathered_.end(), bytes.begin(), bytes.end());
}

void FileReplacement::Flush() {
  if (error_ == 0) {
    error_ = WriteAll(file_.Get(), gathered_);
  }
  gathered_.clear();
}

int FileReplacement::Commit() {
  Flush();
  if (error_ == 0 && fsync(file_.Get()) != 0) {
    error_ = errno;
  }
  if (error_ == 0 && std::rename(temporaryPath_.c_str(), path_.c_str()) != 0) {
    error_ = errno;
  }
  if (error_ == 0) {
    file_.Reset();
    SyncFolderOf(path_);
  }
  return error_;
}

}  // namespace updown
