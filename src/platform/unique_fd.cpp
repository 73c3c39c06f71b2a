#include "platform/unique_fd.h"

#include <fcntl.h>
#include <unistd.h>

namespace updown {

void UniqueFd::Reset(int fd) {
  const int old = std::exchange(fd_, fd);
  if (old >= 0) {
    close(old);
  }
}

// The lowest free number is what open gives: as long as that is a standard one, it stays open.
void HoldStandardStreams() {
  int fd = STDIN_FILENO;
  while (fd >= 0 && fd <= STDERR_FILENO) {
    fd = open("/dev/null", O_RDWR);
  }
  if (fd > STDERR_FILENO) {
    close(fd);
  }
}

}  // namespace updown
