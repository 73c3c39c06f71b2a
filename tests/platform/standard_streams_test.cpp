#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/unique_fd.h"

namespace updown {
namespace {

TEST(StandardStreams, ClosedOnesAreNotGivenToFiles) {
  const UniqueFd saved(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 10));
  close(STDERR_FILENO);
  HoldStandardStreams();
  const UniqueFd file(open("/dev/zero", O_RDONLY | O_CLOEXEC));
  const bool held = fcntl(STDERR_FILENO, F_GETFD) == 0;
  dup2(saved.Get(), STDERR_FILENO);
  EXPECT_TRUE(held);
  EXPECT_GT(file.Get(), STDERR_FILENO);
}

}  // namespace
}  // namespace updown
