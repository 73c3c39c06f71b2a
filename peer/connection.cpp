#include "peer/connection.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <stdexcept>
#include <utility>

namespace updown::peer {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kPieceBound{60'000};
constexpr milliseconds kStallBound{3'600'000};
constexpr std::size_t kSingleBytes = 64;
constexpr std::array<std::size_t, 6> kOddPieces{701, 13, 4099, 1, 1499, 32771};

}  // namespace

Handle::~Handle() {
  if (fd_ >= 0) ::close(fd_);
}

Handle& Handle::operator=(Handle&& other) noexcept {
  if (this != &other) {
    if (fd_ >= 0) ::close(fd_);
    fd_ = other.Release();
  }
  return *this;
}

int Handle::Release() { return std::exchange(fd_, -1); }

StopSignal::StopSignal() : event_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!event_.IsOpen()) throw std::runtime_error("no event descriptor");
}

void StopSignal::Raise() {
  // Nobody ever reads the count, so that the descriptor stays readable for all waiters.
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = ::write(event_.Get(), &one, sizeof one);
}

Connection::Connection(Handle socket, const StopSignal& stop, bool fragment)
    : socket_(std::move(socket)), stop_(stop), fragment_(fragment) {
  const int on = 1;
  ::setsockopt(socket_.Get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

bool Connection::WaitFor(short events, milliseconds patience) const {
  std::array<pollfd, 2> waits{pollfd{socket_.Get(), events, 0},
                              pollfd{stop_.Descriptor(), POLLIN, 0}};
  const auto end = std::chrono::steady_clock::now() + patience;
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(end - std::chrono::steady_clock::now());
    const int ready = ::poll(waits.data(), waits.size(),
                             static_cast<int>(std::max<milliseconds::rep>(left.count(), 0)));
    if (ready < 0 && errno == EINTR) continue;
    return ready > 0 && waits[1].revents == 0;
  }
}

bool Connection::ReceiveExact(std::uint8_t* dest, std::size_t size, milliseconds patience) {
  std::size_t done = 0;
  while (done < size) {
    if (!WaitFor(POLLIN, done == 0 ? patience : kPieceBound)) return false;
    const ssize_t count = ::recv(socket_.Get(), dest + done, size - done, MSG_DONTWAIT);
    if (count > 0) {
      done += static_cast<std::size_t>(count);
    } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
      return false;
    }
  }
  return true;
}

bool Connection::SendPiece(View bytes) {
  while (!bytes.empty()) {
    const ssize_t count =
        ::send(socket_.Get(), bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (count > 0) {
      bytes = bytes.subspan(static_cast<std::size_t>(count));
    } else if (errno == EAGAIN) {
      if (!WaitFor(POLLOUT, kPieceBound)) return false;
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

bool Connection::Send(View bytes) {
  if (!fragment_) return SendPiece(bytes);
  std::size_t sent = 0;
  for (std::size_t piece = 0; sent < bytes.size(); ++piece) {
    const std::size_t want = sent < kSingleBytes ? 1 : kOddPieces[piece % kOddPieces.size()];
    const View part = bytes.subspan(sent, std::min(want, bytes.size() - sent));
    if (!SendPiece(part)) return false;
    sent += part.size();
  }
  return true;
}

bool Connection::Pause(milliseconds duration) const {
  if (duration.count() == 0) return true;
  pollfd wait{stop_.Descriptor(), POLLIN, 0};
  const auto count = std::min<milliseconds::rep>(duration.count(), kStallBound.count());
  return ::poll(&wait, 1, static_cast<int>(count)) == 0;
}

void Connection::WaitForClose() {
  std::array<std::uint8_t, 4096> thrownAway{};
  while (WaitFor(POLLIN, kStallBound)) {
    const ssize_t count = ::recv(socket_.Get(), thrownAway.data(), thrownAway.size(), MSG_DONTWAIT);
    if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) return;
  }
}

}  // namespace updown::peer
