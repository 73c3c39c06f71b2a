#include "platform/debug_stream.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace updown {
namespace {

struct Ends {
  UniqueFd read, write;
};

using Maker = int (*)(int* ends);

int MakeSockets(int* ends) { return socketpair(AF_UNIX, SOCK_STREAM, 0, ends); }

Ends Make(Maker maker) {
  std::array<int, 2> ends{};
  EXPECT_EQ(maker(ends.data()), 0);
  return {UniqueFd(ends[0]), UniqueFd(ends[1])};
}

// All that is there now, which is far less.
std::string Drain(const UniqueFd& fd) {
  fcntl(fd.Get(), F_SETFL, O_NONBLOCK);
  std::string all(4 << 20, '\0');
  const ssize_t count = read(fd.Get(), all.data(), all.size());
  all.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  return all;
}

TEST(DebugStream, NobodyReads) {
  for (const Maker maker : {Maker(pipe), MakeSockets}) {
    const Ends ends = Make(maker);
    DebugStream stream(ends.write.Get());
    const std::string line(99, 'x');
    const std::string longLine(20'000, 'y');
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
      threads.emplace_back([&] {
        for (int n = 0; n < 3000; ++n) {
          stream.Write((n % 10 == 0 ? longLine : line) + '\n');
        }
      });
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
    EXPECT_EQ(fcntl(ends.write.Get(), F_GETFL) & O_NONBLOCK, 0);  // it is the parent's too
    const std::string full = Drain(ends.read);
    EXPECT_GT(full.size(), 50'000U);
    stream.Write("next\n");
    const std::string all = full + Drain(ends.read);
    EXPECT_TRUE(all.ends_with("\nnext\n"));
    std::istringstream lines(all);
    for (std::string one; std::getline(lines, one);) {
      EXPECT_TRUE(one == line || one == "next" || one.find_first_not_of('y') == one.npos) << one;
    }
  }
}

TEST(DebugStream, ALineThatWasCutEndsBeforeTheNext) {
  const Ends ends = Make(pipe);
  DebugStream stream(ends.write.Get());
  stream.Write(std::string(1'000'000, 'y') + '\n');
  const std::string cut = Drain(ends.read);
  ASSERT_LT(cut.size(), 1'000'000U);
  stream.Write("next\n");
  stream.Write("last\n");
  EXPECT_EQ(Drain(ends.read), "\nnext\nlast\n");
}

TEST(DebugStream, ClosedOrWithoutAReader) {
  Ends ends = Make(pipe);
  DebugStream closed(-1);
  closed.Write("lost\n");
  DebugStream early(ends.write.Get());
  ends.read.Reset();
  DebugStream late(ends.write.Get());
  signal(SIGPIPE, SIG_IGN);
  errno = 7;
  early.Write("lost\n");
  late.Write("lost\n");
  EXPECT_EQ(errno, 7);
}

TEST(DebugStream, AFileIsWrittenWhereItsOwnerWrites) {
  const UniqueFd file(memfd_create("error", MFD_CLOEXEC));
  ASSERT_TRUE(file);
  DebugStream stream(file.Get());
  ASSERT_EQ(write(file.Get(), "first\n", 6), 6);
  stream.Write("second\n");
  ASSERT_EQ(write(file.Get(), "third\n", 6), 6);
  lseek(file.Get(), 0, SEEK_SET);
  EXPECT_EQ(Drain(file), "first\nsecond\nthird\n");
}

TEST(DebugStream, FormatsAsPrintfDoes) {
  EXPECT_EXIT((DebugLine("%x %.*s\n", 0x8000, 2, "abc"), _exit(0)), testing::ExitedWithCode(0),
              "^8000 ab\n$");
}

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
