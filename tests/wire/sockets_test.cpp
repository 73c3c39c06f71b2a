#include "wire/sockets.h"

#include <gtest/gtest.h>
#include <netinet/tcp.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <numeric>
#include <thread>

#include "tests/wire/loopback.h"

namespace updown {
namespace {

using testing::Listener;
using testing::Loopback;

std::uint32_t In(std::uint32_t milliseconds) { return SystemTicks().Now() + milliseconds; }

int Option(int socket, int level, int name) {
  int value = -1;
  socklen_t size = sizeof value;
  getsockopt(socket, level, name, &value, &size);
  return value;
}

// A connection as the system makes them, and its other end.
struct Connection {
  Connection()
      : client(ConnectDeadline(Loopback(), listener.Port(), In(5000))), peer(listener.Accept()) {}
  ~Connection() { CloseSocket(client); }

  Listener listener;
  int client;
  UniqueFd peer;
};

TEST(Sockets, ASilentPeerIsGivenUpWithinTwoMinutes) {
  const Connection connection;
  EXPECT_EQ(Option(connection.client, SOL_SOCKET, SO_KEEPALIVE), 1);
  const int probing = Option(connection.client, IPPROTO_TCP, TCP_KEEPCNT) *
                      Option(connection.client, IPPROTO_TCP, TCP_KEEPINTVL);
  EXPECT_LT(Option(connection.client, IPPROTO_TCP, TCP_KEEPIDLE) + probing, 120);
  const int unacknowledged = Option(connection.client, IPPROTO_TCP, TCP_USER_TIMEOUT);
  EXPECT_TRUE(unacknowledged > 0 && unacknowledged < 120000);
}

TEST(Sockets, FailuresGiveTheirCodes) {
  Connection connection;
  std::array<std::uint8_t, 4> buffer{};
  ASSERT_EQ(send(connection.peer.Get(), "xab", 3, 0), 3);
  for (const std::uint32_t deadline : {In(0), SystemTicks().Now() - 1}) {
    EXPECT_EQ(RecvDeadline(connection.client, buffer, 0, true, deadline), kDeadlinePassed);
    EXPECT_EQ(SendDeadline(connection.client, buffer, 0, true, deadline), kDeadlinePassed);
    EXPECT_EQ(RecvDeadline(-1, {}, 0, true, deadline), 0);
  }
  EXPECT_EQ(RecvDeadline(connection.client, std::span(buffer).first(1), 0, false, In(5000)), 1);
  EXPECT_EQ(RecvDeadline(connection.client, buffer, 0, true, In(20)), kDeadlinePassed);
  EXPECT_EQ(buffer[0], 'a') << "what came before the failure";
  connection.peer.Reset();
  EXPECT_EQ(RecvDeadline(connection.client, buffer, 0, true, In(5000)), kPeerClosed);
  connection.listener.Close();
  EXPECT_EQ(ConnectDeadline(Loopback(), connection.listener.Port(), In(5000)), -ECONNREFUSED);
}

TEST(Sockets, SendsMoreThanTheSocketHoldsAndSurvivesAClosedPeer) {
  Connection connection;
  std::vector<std::uint8_t> data(8 << 20);
  std::iota(data.begin(), data.end(), std::uint8_t{0});
  std::vector<std::uint8_t> received(data.size());
  std::thread reader(
      [&] { recv(connection.peer.Get(), received.data(), received.size(), MSG_WAITALL); });
  EXPECT_EQ(SendDeadline(connection.client, data, 0, true, In(20000)),
            static_cast<int>(data.size()));
  reader.join();
  EXPECT_EQ(received, data);
  connection.peer.Reset();
  EXPECT_LT(SendDeadline(connection.client, data, 0, true, In(20000)), 0);
}

}  // namespace
}  // namespace updown
