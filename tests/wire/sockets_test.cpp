#include "wire/sockets.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/tcp.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <numeric>
#include <string>
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

// Connects towards a loopback port that nobody has answered yet.
int PendingConnects(std::uint16_t port) {
  char wanted[32];
  std::snprintf(wanted, sizeof wanted, " 0100007F:%04X 02 ", port);
  std::ifstream table("/proc/net/tcp");
  int count = 0;
  for (std::string line; std::getline(table, line);) {
    count += line.find(wanted) != std::string::npos ? 1 : 0;
  }
  return count;
}

// A connection as the system makes them, and its other end.
struct Connection {
  explicit Connection(SocketGroup* group = nullptr)
      : client(ConnectDeadline(Loopback(), listener.Port(), In(5000), group)),
        peer(listener.Accept()) {}
  ~Connection() { CloseSocket(client); }

  Listener listener;
  int client;
  UniqueFd peer;
};

TEST(Sockets, ConnectionIsNonBlockingAndWatched) {
  const Connection connection;
  ASSERT_GT(connection.client, 2);
  EXPECT_NE(fcntl(connection.client, F_GETFL) & O_NONBLOCK, 0);
  EXPECT_NE(fcntl(connection.client, F_GETFD) & FD_CLOEXEC, 0);
  EXPECT_EQ(Option(connection.client, SOL_SOCKET, SO_KEEPALIVE), 1);
  const int idle = Option(connection.client, IPPROTO_TCP, TCP_KEEPIDLE);
  EXPECT_EQ(idle, 30);
  EXPECT_LT(idle + Option(connection.client, IPPROTO_TCP, TCP_KEEPCNT) *
                       Option(connection.client, IPPROTO_TCP, TCP_KEEPINTVL),
            120);
  const int unacknowledged = Option(connection.client, IPPROTO_TCP, TCP_USER_TIMEOUT);
  EXPECT_GT(unacknowledged, 0);
  EXPECT_LT(unacknowledged, 120000);
  SetBlocking(connection.client, true);
  EXPECT_EQ(fcntl(connection.client, F_GETFL) & O_NONBLOCK, 0);
}

TEST(Sockets, NumberNeverCollidesWithStandardStreams) {
  const Listener listener;
  const int saved = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 100);
  close(STDIN_FILENO);
  const int client = ConnectDeadline(Loopback(), listener.Port(), In(5000));
  const bool stillFree = fcntl(STDIN_FILENO, F_GETFD) < 0;
  dup2(saved, STDIN_FILENO);
  close(saved);
  EXPECT_GT(client, 2);
  EXPECT_TRUE(stillFree);
  CloseSocket(client);
}

TEST(Sockets, RefusedConnectionGivesItsError) {
  Listener listener;
  listener.Close();
  EXPECT_EQ(ConnectDeadline(Loopback(), listener.Port(), In(5000)), -ECONNREFUSED);
}

TEST(Sockets, PastDeadlineAndEmptyBuffer) {
  const Connection connection;
  std::array<std::uint8_t, 4> buffer{};
  ASSERT_EQ(send(connection.peer.Get(), "x", 1, 0), 1);
  for (const std::uint32_t deadline : {In(0), SystemTicks().Now() - 1}) {
    EXPECT_EQ(RecvDeadline(connection.client, buffer, 0, true, deadline), kDeadlinePassed);
    EXPECT_EQ(SendDeadline(connection.client, buffer, 0, true, deadline), kDeadlinePassed);
    EXPECT_EQ(RecvDeadline(-1, {}, 0, true, deadline), 0);
    EXPECT_EQ(SendDeadline(-1, {}, 0, true, deadline), 0);
  }
  EXPECT_EQ(RecvDeadline(connection.client, buffer, 0, true, In(20)), kDeadlinePassed);
  EXPECT_EQ(buffer[0], 'x');
}

TEST(Sockets, ExactOrFirstBytes) {
  Connection connection;
  std::array<std::uint8_t, 4> buffer{};
  ASSERT_EQ(send(connection.peer.Get(), "ab", 2, 0), 2);
  EXPECT_EQ(RecvDeadline(connection.client, buffer, 0, false, In(5000)), 2);
  ASSERT_EQ(send(connection.peer.Get(), "ab", 2, 0), 2);
  connection.peer.Reset();
  EXPECT_EQ(RecvDeadline(connection.client, buffer, 0, true, In(5000)), kPeerClosed);
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

TEST(Sockets, CutWakesConnectAndReceive) {
  // A listener whose queue is full leaves further connects waiting.
  const Listener full(0);
  std::vector<UniqueFd> filling;
  for (int n = 0; n < 3; ++n) {
    filling.emplace_back(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(full.Port());
    address.sin_addr.s_addr = Loopback();
    connect(filling.back().Get(), reinterpret_cast<sockaddr*>(&address), sizeof address);
  }
  const int pending = PendingConnects(full.Port());
  SocketGroup group;
  const Connection connection(&group);
  SetBlocking(connection.client, true);
  std::atomic<int> connected{0};
  std::atomic<ssize_t> received{-2};
  std::thread connecting(
      [&] { connected = ConnectDeadline(Loopback(), full.Port(), In(60000), &group); });
  std::thread receiving([&] {
    char byte = 0;
    received = recv(connection.client, &byte, 1, 0);
  });
  while (PendingConnects(full.Port()) == pending) {
    std::this_thread::yield();
  }
  group.CutAll();
  connecting.join();
  receiving.join();
  EXPECT_LT(connected, 0);
  EXPECT_LE(received, 0);
  EXPECT_FALSE(group.Add(connection.client));
  EXPECT_LT(ConnectDeadline(Loopback(), connection.listener.Port(), In(5000), &group), 0);
}

TEST(Sockets, CutRacesWithOpeningAndClosing) {
  const Listener listener(128);
  for (int round = 0; round < 100; ++round) {
    SocketGroup group;
    std::thread opener([&] {
      for (int n = 0; n < 3; ++n) {
        const int client = ConnectDeadline(Loopback(), listener.Port(), In(5000), &group);
        if (client > 0) {
          listener.Accept();
          CloseSocket(client, &group);
        }
      }
    });
    group.CutAll();
    opener.join();
  }
}

}  // namespace
}  // namespace updown
