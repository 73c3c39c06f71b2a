#include "service/connection.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <thread>

#include "platform/environment.h"
#include "platform/unique_fd.h"
#include "service/operations.h"
#include "tests/support/environment.h"
#include "tests/wire/loopback.h"

namespace updown {
namespace {

using std::chrono::milliseconds;

struct Joined {
  Joined() {
    int ends[2] = {-1, -1};
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    link.Adopt(ends[0]);
    peer.Reset(ends[1]);
  }
  int Receive() {
    std::array<std::uint8_t, 4> bytes{};
    std::size_t moved = 0;
    return link.Receive(bytes, moved);
  }
  SocketGroup group;
  Connection link{&group};
  UniqueFd peer;
};

TEST(Connection, SilenceAndTheDeadlineEndEveryWait) {
  for (const bool sends : {false, true}) {
    for (const bool byDeadline : {false, true}) {
      Joined joined;
      if (byDeadline) {
        joined.link.SetDeadline(Connection::Clock::now() + milliseconds(30));
      } else {
        joined.link.SetSilenceLimit(milliseconds(30));
      }
      const std::vector<std::uint8_t> bytes(1 << 20);
      std::size_t moved = 1;
      int result = result::kOk;
      while (result == result::kOk) {
        result = sends ? joined.link.Send(bytes, moved) : joined.Receive();
      }
      EXPECT_EQ(result, result::kConnection);
      EXPECT_EQ(joined.link.LastError(), ETIMEDOUT);
      EXPECT_FALSE(joined.link.IsOpen());
      EXPECT_EQ(joined.link.RequestStarted(), sends);
    }
  }
}

TEST(Connection, ACutFromAnotherThreadEndsItForGood) {
  for (const bool byGroup : {false, true}) {
    Joined joined;
    std::thread other([&] {
      std::this_thread::sleep_for(milliseconds(5));
      byGroup ? joined.group.CutAll() : joined.link.Cut();
    });
    EXPECT_EQ(joined.Receive(), result::kConnection);
    other.join();
    EXPECT_EQ(joined.link.LastError(), ECANCELED);
    EXPECT_TRUE(joined.link.WasCut());
    EXPECT_EQ(joined.link.Open("fs", 1), result::kConnection);
  }
}

// The socket's number is taken again by another one at once.
TEST(Connection, CuttingWhileItClosesMeetsNoOtherSocket) {
  for (int round = 0; round < 300; ++round) {
    Joined joined;
    std::thread other([&] { joined.link.Cut(); });
    joined.link.Close();
    const UniqueFd next(dup(joined.peer.Get()));
    other.join();
    char byte = 0;
    EXPECT_EQ(recv(next.Get(), &byte, 1, MSG_DONTWAIT), 0) << "only our end is gone";
    Joined fresh;
    EXPECT_FALSE(fresh.link.PeerHasClosed());
  }
}

TEST(Connection, TellsWhatCameWhileNothingWasAsked) {
  Joined joined;
  EXPECT_FALSE(joined.link.PeerHasClosed() || joined.link.HasUnreadBytes());
  ASSERT_EQ(send(joined.peer.Get(), "x", 1, 0), 1);
  EXPECT_TRUE(joined.link.HasUnreadBytes());
  EXPECT_EQ(joined.Receive(), result::kOk);
  joined.peer.Reset();
  EXPECT_TRUE(joined.link.PeerHasClosed());
  EXPECT_FALSE(joined.link.HasUnreadBytes());
  joined.link.BeginRequest();
  std::size_t moved = 0;
  EXPECT_EQ(joined.link.Send(AsBytes("request"), moved), result::kConnection);
  EXPECT_FALSE(joined.link.RequestStarted());
}

// Name and connection share the time: neither has one of its own.
TEST(Connection, OpeningEndsWithItsDeadline) {
  const testing::SilentListener silent;
  const testing::Listener mute;
  for (const std::uint16_t port : {silent.Port(), mute.Port()}) {
    const test::ScopedEnvironment environment(
        {{kVariableRelayPort, std::to_string(port)}, {kVariableRelayAddress, "127.0.0.1"}});
    Connection link;
    const auto begun = Connection::Clock::now();
    link.SetDeadline(begun + milliseconds(60));
    EXPECT_EQ(link.Open("fs", 8080), result::kConnection);
    EXPECT_EQ(link.LastError(), ETIMEDOUT);
    EXPECT_LT(Connection::Clock::now() - begun, milliseconds(3000));
  }
}

}  // namespace
}  // namespace updown
