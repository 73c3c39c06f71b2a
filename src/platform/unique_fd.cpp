#include "platform/unique_fd.h"

#include <unistd.h>

namespace updown {

void UniqueFd::Reset(int fd) {
  const int old = std::exchange(fd_, fd);
  if (old >= 0) {
    close(old);
  }
}

}  // namespace updown
