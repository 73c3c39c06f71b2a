#include "app/session_bus.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "platform/debug_stream.h"
#include "platform/folders.h"
#include "platform/unique_fd.h"

namespace updown {
namespace {

constexpr const char* kAddressVariable = "DBUS_SESSION_BUS_ADDRESS";
constexpr int kBusAnswerLimit = 1000;                   // ms
constexpr std::string_view kQuestion("\0AUTH\r\n", 7);  // a bus tells then what it accepts

std::string ValueOf(const char* variable) {
  const char* const value = std::getenv(variable);
  return value == nullptr ? std::string() : std::string(value);
}

// Of the first address, if it is a socket of this machine; one without a file begins with a 0.
std::optional<std::string> SocketName(const std::string& address) {
  const auto valueOf = [&address](std::string_view key) {
    const std::size_t begin = address.find(key) + key.size();
    return address.substr(begin, address.find_first_of(",;", begin) - begin);
  };
  if (address.starts_with("unix:path=")) {
    return valueOf("path=");
  }
  if (address.starts_with("unix:abstract=")) {
    return std::string(1, '\0') + valueOf("abstract=");
  }
  return std::nullopt;
}

// False only for one that takes the connection and keeps silent.
bool Answers(const std::string& socketName) {
  const UniqueFd bus(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (socketName.size() >= sizeof address.sun_path) {
    return true;
  }
  socketName.copy(address.sun_path, socketName.size());
  const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + socketName.size() +
                                             (socketName.front() == '\0' ? 0 : 1));
  if (connect(bus.Get(), reinterpret_cast<sockaddr*>(&address), length) != 0) {
    return errno != EAGAIN;  // its queue is full of those who wait
  }
  if (send(bus.Get(), kQuestion.data(), kQuestion.size(), MSG_NOSIGNAL) < 0) {
    return true;
  }
  pollfd answer{bus.Get(), POLLIN, 0};
  return poll(&answer, 1, kBusAnswerLimit) != 0;
}

}  // namespace

std::string SessionBusAddress() {
  std::string address = ValueOf(kAddressVariable);
  const std::string socket = ValueOf("XDG_RUNTIME_DIR") + "/bus";
  return !address.empty() || !PathExists(socket) ? address : "unix:path=" + socket;
}

void LeaveOutSilentBus() {
  const std::optional<std::string> name = SocketName(SessionBusAddress());
  if (name && !name->empty() && !Answers(*name)) {
    DebugLine("updown: the session bus does not answer and is left out\n");
    setenv(kAddressVariable, "disabled:", 1);
  }
}

}  // namespace updown
