#include "platform/debug_stream.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>
#include <thread>
#include <vector>

namespace updown {
namespace {

struct Ends {
  UniqueFd read, write;
};

Ends Pipe() {
  std::array<int, 2> ends{};
  EXPECT_EQ(pipe(ends.data()), 0);
  return {UniqueFd(ends[0]), UniqueFd(ends[1])};
}

Ends SocketPair() {
  std::array<int, 2> ends{};
  EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
  return {UniqueFd(ends[0]), UniqueFd(ends[1])};
}

// All that is there now.
std::string Drain(const UniqueFd& fd) {
  fcntl(fd.Get(), F_SETFL, O_NONBLOCK);
  std::string all;
  std::array<char, 65536> piece;
  ssize_t count;
  while ((count = read(fd.Get(), piece.data(), piece.size())) > 0) {
    all.append(piece.data(), static_cast<std::size_t>(count));
  }
  return all;
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t from = 0;
  for (std::size_t end; (end = text.find('\n', from)) != std::string::npos; from = end + 1) {
    lines.push_back(text.substr(from, end - from));
  }
  return lines;
}

TEST(DebugStream, NobodyReads) {
  for (const bool isPipe : {true, false}) {
    SCOPED_TRACE(isPipe ? "pipe" : "socket");
    const Ends ends = isPipe ? Pipe() : SocketPair();
    DebugStream stream(ends.write.Get());
    const std::string line(99, 'x');
    const std::string longLine(20'000, 'y');
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
      threads.emplace_back([&] {
        for (int n = 0; n < 3000; ++n) {
          stream.Write(n % 10 == 0 ? longLine + '\n' : line + '\n');
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
    const std::vector<std::string> after = Lines(full + Drain(ends.read));
    ASSERT_FALSE(after.empty());
    EXPECT_EQ(after.back(), "next");
    for (const std::string& one : after) {
      if (one != line && one != longLine && one != "next" && !one.empty()) {
        EXPECT_EQ(one.find_first_not_of('y'), std::string::npos) << one.size();
      }
    }
  }
}

TEST(DebugStream, ALineThatWasCutEndsBeforeTheNext) {
  const Ends ends = Pipe();
  DebugStream stream(ends.write.Get());
  stream.Write(std::string(1'000'000, 'y') + '\n');
  const std::string cut = Drain(ends.read);
  ASSERT_LT(cut.size(), 1'000'000U);
  stream.Write("next\n");
  stream.Write("last\n");
  EXPECT_EQ(Drain(ends.read), "\nnext\nlast\n");
}

TEST(DebugStream, ClosedOrWithoutAReader) {
  Ends ends = Pipe();
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

}  // namespace
}  // namespace updown
