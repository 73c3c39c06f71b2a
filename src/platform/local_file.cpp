#include "platform/local_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

namespace updown {
namespace {

int OpenInterruptible(const std::string& path, int flags, mode_t mode) {
  int fd = -1;
  do {
    fd = open(path.c_str(), flags, mode);
  } while (fd < 0 && errno == EINTR);
  return fd;
}

// 0, or the error that tells why `fd` is not to be used.
int ErrorOfFileKind(int fd) {
  struct stat status {};
  if (fstat(fd, &status) != 0) {
    return errno;
  }
  if (S_ISREG(status.st_mode)) {
    return 0;
  }
  return S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
}

}  // namespace

UniqueFd OpenFile(const std::string& path, FileAccess access, FileDisposition disposition,
                  mode_t mode) {
  if (path.find('\0') != std::string::npos) {
    errno = EINVAL;  // the call would take the part in front of it
    return {};
  }
  // Without O_NONBLOCK the open of a pipe would wait for somebody at its other end.
  int flags = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  flags |= access == FileAccess::Read ? O_RDONLY : O_RDWR;
  flags |= disposition == FileDisposition::OpenAlways ? O_CREAT : 0;
  UniqueFd file(OpenInterruptible(path, flags, mode));
  if (!file) {
    return {};
  }
  if (const int error = ErrorOfFileKind(file.Get()); error != 0) {
    file.Reset();
    errno = error;
    return {};
  }
  fcntl(file.Get(), F_SETFL, 0);
  return file;
}

std::int64_t FileSize(int fd) {
  struct stat status {};
  return fstat(fd, &status) == 0 ? status.st_size : -1;
}

}  // namespace updown
