#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cstdint>

#include "platform/unique_fd.h"

namespace updown::testing {

// A TCP listener on an ephemeral port of loopback.
class Listener {
 public:
  explicit Listener(int backlog = 16) : fd_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    bind(fd_.Get(), reinterpret_cast<sockaddr*>(&address), size);
    listen(fd_.Get(), backlog);
    getsockname(fd_.Get(), reinterpret_cast<sockaddr*>(&address), &size);
    port_ = ntohs(address.sin_port);
  }

  std::uint16_t Port() const { return port_; }
  UniqueFd Accept() const { return UniqueFd(accept(fd_.Get(), nullptr, nullptr)); }
  void Close() { fd_.Reset(); }

 private:
  UniqueFd fd_;
  std::uint16_t port_ = 0;
};

inline std::uint32_t Loopback() { return htonl(INADDR_LOOPBACK); }

}  // namespace updown::testing
