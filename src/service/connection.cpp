#include "service/connection.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <limits>

#include "platform/ticks.h"
#include "service/result_codes.h"
#include "wire/relay.h"

namespace updown {

namespace {

using std::chrono::milliseconds;

// The errno of a code of the wire's calls; 0, no relay, stays 0.
int ErrorOfCode(int code) {
  switch (code) {
    case kDeadlinePassed:
      return ETIMEDOUT;
    case kPeerClosed:
    case kWrongRelayHead:
      return ECONNRESET;
    default:
      return -code;
  }
}

// EPERM is what a sandbox answers.
bool IsUnsupported(int error) {
  return error == EINVAL || error == ENOSYS || error == EOPNOTSUPP || error == EPERM ||
         error == ENOMEM;
}

bool WouldBlock(int error) { return error == EAGAIN || error == EWOULDBLOCK; }

}  // namespace

int Connection::Open(std::string_view serverName, std::uint16_t port) {
  Close();
  lastError_ = 0;
  const auto now = Clock::now();
  const auto left = std::chrono::ceil<milliseconds>(deadline_.value_or(now + kOpeningLimit) - now);
  const auto span = std::clamp<std::int64_t>(left.count(), 0, std::numeric_limits<int>::max());
  const RelayLimits limits{SystemTicks().Now() + static_cast<std::uint32_t>(span), &cutters_};
  const int socket = ServiceConnect(serverName, port, limits);
  if (socket < 1) {
    return Fail(ErrorOfCode(socket));
  }
  socket_ = socket;
  return result::kOk;
}

int Connection::Adopt(int socket) {
  Close();
  if (!cutters_.Add(socket)) {
    CloseSocket(socket);
    return Fail(ECANCELED);
  }
  SetBlocking(socket, false);
  socket_ = socket;
  return result::kOk;
}

void Connection::Close() {
  if (IsOpen()) {
    CloseSocket(socket_, &cutters_);
    socket_ = -1;
  }
}

int Connection::Fail(int error) {
  lastError_ = WasCut() ? ECANCELED : error;
  Close();
  return result::kConnection;
}

Connection::Arrived Connection::Peek() const {
  if (!IsOpen()) {
    return Arrived::Nothing;
  }
  char first = 0;
  const ssize_t peeked = recv(socket_, &first, 1, MSG_PEEK);
  if (peeked < 0 && WouldBlock(errno)) {
    return Arrived::Nothing;
  }
  return peeked > 0 ? Arrived::Data : Arrived::End;
}

milliseconds Connection::TimeLeft(Clock::time_point since) const {
  auto until = since + silence_;
  if (deadline_ && *deadline_ < until) {
    until = *deadline_;
  }
  return std::chrono::ceil<milliseconds>(until - Clock::now());
}

int Connection::Wait(short events, Clock::time_point since) const {
  for (;;) {
    const auto left = TimeLeft(since).count();
    if (left < 1) {
      return ETIMEDOUT;
    }
    pollfd waited{socket_, events, 0};
    const auto most = std::min<std::int64_t>(left, std::numeric_limits<int>::max());
    const int ready = poll(&waited, 1, static_cast<int>(most));
    if (ready > 0) {
      return 0;
    }
    if (ready < 0 && errno != EINTR) {
      return errno;
    }
  }
}

// `move` is the system's call; it moves at least a byte, or waits for that.
template <typename Move>
int Connection::MoveSome(short events, std::size_t& moved, Move move) {
  moved = 0;
  if (!IsOpen()) {
    return Fail(lastError_ == 0 ? ENOTCONN : lastError_);
  }
  const auto begun = Clock::now();
  for (;;) {
    if (WasCut()) {
      return Fail(ECANCELED);
    }
    if (deadline_ && begun >= *deadline_) {
      return Fail(ETIMEDOUT);
    }
    const ssize_t count = move();
    if (count > 0) {
      moved = static_cast<std::size_t>(count);
      return result::kOk;
    }
    int error = count == 0 ? ECONNRESET : errno;
    if (WouldBlock(error)) {
      error = Wait(events, begun);
    }
    if (error != 0 && error != EINTR) {
      return Fail(error);
    }
  }
}

int Connection::Send(Bytes bytes, std::size_t& moved) {
  const int sent = MoveSome(
      POLLOUT, moved, [&] { return send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL); });
  requestStarted_ = requestStarted_ || moved > 0;
  return sent;
}

int Connection::Receive(std::span<std::uint8_t> space, std::size_t& moved) {
  return MoveSome(POLLIN, moved, [&] { return recv(socket_, space.data(), space.size(), 0); });
}

int Connection::ReceiveInto(int pipe, std::size_t most, std::size_t& moved) {
  bool unsupported = false;
  const int received = MoveSome(POLLIN, moved, [&]() -> ssize_t {
    const ssize_t count = splice(socket_, nullptr, pipe, nullptr, most, SPLICE_F_MOVE);
    unsupported = count < 0 && IsUnsupported(errno);
    return unsupported ? 1 : count;
  });
  moved = unsupported ? 0 : moved;
  return received;
}

}  // namespace updown
