#include "platform/instance_event.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <optional>
#include <thread>

#include "platform/unique_fd.h"

namespace updown {
namespace {

// A holder that dies leaves its name bound for a moment in which nobody answers.
constexpr int kTries = 20;
constexpr std::chrono::milliseconds kPause{10};

struct Address {
  sockaddr_un bytes{};
  socklen_t length = 0;

  const sockaddr* Get() const { return reinterpret_cast<const sockaddr*>(&bytes); }
};

// An abstract address: a zero byte, then the name without a terminator.
std::optional<Address> AbstractAddress(const std::string& name) {
  Address address;
  if (name.empty() || name.size() >= sizeof(address.bytes.sun_path)) {
    return std::nullopt;
  }
  address.bytes.sun_family = AF_UNIX;
  std::copy(name.begin(), name.end(), address.bytes.sun_path + 1);
  address.length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
  return address;
}

// 0, or the error. A holder that has not yet looked at earlier signals counts as signalled.
int Signal(int socket, const Address& holder) {
  const char byte = 1;
  const int flags = MSG_NOSIGNAL | MSG_DONTWAIT;
  if (sendto(socket, &byte, sizeof byte, flags, holder.Get(), holder.length) >= 0) {
    return 0;
  }
  return errno == EAGAIN ? 0 : errno;
}

}  // namespace

InstanceEvent::Result InstanceEvent::CreateOrSignal(const std::string& name) {
  Result result{Outcome::Failed, nullptr};
  const std::optional<Address> address = AbstractAddress(name);
  UniqueFd socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!address || !socket) {
    return result;
  }
  for (int i = 0; i < kTries; ++i) {
    if (bind(socket.Get(), address->Get(), address->length) == 0) {
      result.outcome = Outcome::Created;
      result.event.reset(new InstanceEvent(socket.Release()));
      return result;
    }
    if (errno != EADDRINUSE) {
      return result;
    }
    const int error = Signal(socket.Get(), *address);
    if (error == 0) {
      result.outcome = Outcome::AlreadyExists;
      return result;
    }
    if (error != ECONNREFUSED) {
      return result;
    }
    std::this_thread::sleep_for(kPause);
  }
  return result;
}

InstanceEvent::~InstanceEvent() { close(fd_); }

bool InstanceEvent::TestAndReset() {
  constexpr int kMost = 1000;  // a sender that never stops must not keep us here
  bool signalled = false;
  char byte = 0;
  for (int i = 0; i < kMost && recv(fd_, &byte, sizeof byte, MSG_DONTWAIT) >= 0; ++i) {
    signalled = true;
  }
  return signalled;
}

}  // namespace updown
