#include "wire/sockets.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace updown {

namespace {

// Seconds: 30 of silence, then 6 probes 10 apart. The user timeout says the same for data that
// nobody acknowledges, which the probes do not cover.
constexpr int kKeepIdle = 30;
constexpr int kKeepInterval = 10;
constexpr int kKeepProbes = 6;
constexpr int kUnacknowledgedMs = 90000;

void SetOption(int socket, int level, int option, int value) {
  setsockopt(socket, level, option, &value, sizeof value);
}

void WatchPeer(int socket) {
  SetOption(socket, SOL_SOCKET, SO_KEEPALIVE, 1);
  SetOption(socket, IPPROTO_TCP, TCP_KEEPIDLE, kKeepIdle);
  SetOption(socket, IPPROTO_TCP, TCP_KEEPINTVL, kKeepInterval);
  SetOption(socket, IPPROTO_TCP, TCP_KEEPCNT, kKeepProbes);
  SetOption(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, kUnacknowledgedMs);
  // The relay's connect packet has no reply, so the first request must not wait behind it.
  SetOption(socket, IPPROTO_TCP, TCP_NODELAY, 1);
}

// A non-blocking TCP socket, or a negated errno.
int MakeSocket() {
  const int made = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, IPPROTO_TCP);
  if (made < 0) {
    return -errno;
  }
  WatchPeer(made);
  return made;
}

std::int32_t TimeLeft(std::uint32_t deadline) { return TicksLeft(deadline, SystemTicks().Now()); }

// One wait on one socket: the events that are there, 0 after the time, or a negated errno.
int Wait(int socket, short events, std::int32_t milliseconds) {
  pollfd waited{socket, events, 0};
  const int ready = poll(&waited, 1, milliseconds);
  if (ready < 0) {
    return -errno;
  }
  return ready == 0 ? 0 : waited.revents;
}

// 0 once the connection stands, else a code.
int AwaitConnection(int socket, std::uint32_t deadline) {
  for (;;) {
    const std::int32_t left = TimeLeft(deadline);
    if (left < 1) {
      return kDeadlinePassed;
    }
    const int ready = Wait(socket, POLLOUT, left);
    if (ready == 0 || ready == -EINTR) {
      continue;
    }
    if (ready < 0) {
      return ready;
    }
    int error = 0;
    socklen_t size = sizeof error;
    if (getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size) != 0) {
      return -errno;
    }
    // A socket cut before its connect began hangs up without an error of its own.
    if (error == 0 && (ready & POLLOUT) == 0) {
      error = ECONNABORTED;
    }
    return -error;
  }
}

int StartConnection(int socket, Ipv4Address address, std::uint16_t port, std::uint32_t deadline) {
  sockaddr_in target{};
  target.sin_family = AF_INET;
  target.sin_port = htons(port);
  target.sin_addr.s_addr = address;
  if (connect(socket, reinterpret_cast<const sockaddr*>(&target), sizeof target) == 0) {
    return 0;
  }
  // An interrupted connect goes on in the background like one that would block.
  if (errno != EINPROGRESS && errno != EINTR) {
    return -errno;
  }
  return AwaitConnection(socket, deadline);
}

bool MayRepeat(int error) { return error == EINTR || error == EAGAIN || error == EWOULDBLOCK; }

// The loop that sending and receiving share. `move(done)` is the platform call on what lies behind
// the first `done` bytes; `onZero` is the result when it moves nothing.
template <typename Move>
int MoveBytes(int socket, short events, std::size_t length, bool exact, std::uint32_t deadline,
              int onZero, Move move) {
  std::size_t done = 0;
  while (done < length) {
    const std::int32_t left = TimeLeft(deadline);
    if (left < 1) {
      return kDeadlinePassed;
    }
    const int ready = Wait(socket, events, left);
    if (ready == 0) {
      return kDeadlinePassed;
    }
    if (ready < 0 && ready != -EINTR) {
      return ready;
    }
    const ssize_t moved = move(done);
    if (moved == 0) {
      return onZero;
    }
    if (moved < 0) {
      if (MayRepeat(errno)) {
        continue;
      }
      return -errno;
    }
    done += static_cast<std::size_t>(moved);
    if (!exact) {
      break;
    }
  }
  return static_cast<int>(done);
}

}  // namespace

bool SocketGroup::Add(int socket) {
  if (whole_ != nullptr && !whole_->Add(socket)) {
    return false;
  }
  {
    const std::lock_guard lock(mutex_);
    if (!cut_) {
      sockets_.push_back(socket);
      return true;
    }
  }
  if (whole_ != nullptr) {
    whole_->Remove(socket);
  }
  return false;
}

void SocketGroup::Remove(int socket) {
  if (whole_ != nullptr) {
    whole_->Remove(socket);
  }
  const std::lock_guard lock(mutex_);
  std::erase(sockets_, socket);
}

void SocketGroup::CutAll() {
  // Under the lock, so that no member is closed, and its number taken by another, meanwhile.
  const std::lock_guard lock(mutex_);
  cut_ = true;
  for (const int socket : sockets_) {
    shutdown(socket, SHUT_RDWR);
  }
}

int ConnectDeadline(Ipv4Address address, std::uint16_t port, std::uint32_t deadline,
                    SocketGroup* group) {
  const int socket = MakeSocket();
  if (socket < 0) {
    return socket;
  }
  if (group != nullptr && !group->Add(socket)) {
    CloseSocket(socket);
    return -ECONNABORTED;
  }
  const int result = StartConnection(socket, address, port, deadline);
  if (result != 0) {
    CloseSocket(socket, group);
    return result;
  }
  return socket;
}

int RecvDeadline(int socket, std::span<std::uint8_t> buffer, int flags, bool exact,
                 std::uint32_t deadline) {
  return MoveBytes(
      socket, POLLIN, buffer.size(), exact, deadline, kPeerClosed,
      [&](std::size_t done) { return recv(socket, &buffer[done], buffer.size() - done, flags); });
}

int SendDeadline(int socket, Bytes data, int flags, bool exact, std::uint32_t deadline) {
  return MoveBytes(socket, POLLOUT, data.size(), exact, deadline, 0, [&](std::size_t done) {
    return send(socket, &data[done], data.size() - done, flags | MSG_NOSIGNAL);
  });
}

void SetBlocking(int socket, bool blocking) {
  const int flags = fcntl(socket, F_GETFL);
  fcntl(socket, F_SETFL, blocking ? flags & ~O_NONBLOCK : flags | O_NONBLOCK);
}

void CloseSocket(int socket, SocketGroup* group) {
  if (group != nullptr) {
    group->Remove(socket);
  }
  close(socket);
}

}  // namespace updown
