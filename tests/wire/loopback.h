#pragma once

#include <arpa/inet.h>
#include <sys/socket.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "platform/unique_fd.h"

namespace updown::testing {

inline std::uint32_t Loopback() { return htonl(INADDR_LOOPBACK); }

// A TCP listener on an ephemeral port of loopback.
class Listener {
 public:
  explicit Listener(int backlog = 128) : fd_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    address_.sin_family = AF_INET;
    address_.sin_addr.s_addr = Loopback();
    socklen_t size = sizeof address_;
    (void)bind(fd_.Get(), reinterpret_cast<sockaddr*>(&address_), size);
    listen(fd_.Get(), backlog);
    getsockname(fd_.Get(), reinterpret_cast<sockaddr*>(&address_), &size);
  }

  std::uint16_t Port() const { return ntohs(address_.sin_port); }
  UniqueFd Accept() const { return UniqueFd(accept(fd_.Get(), nullptr, nullptr)); }
  void Close() { fd_.Reset(); }

 protected:
  UniqueFd fd_;
  sockaddr_in address_{};
};

// Its queue is full: further connects stay without an answer.
class SilentListener : public Listener {
 public:
  SilentListener() : Listener(0) {
    for (int i = 0; i < 4; ++i) {
      fillers_.emplace_back(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
      (void)connect(fillers_.back().Get(), reinterpret_cast<sockaddr*>(&address_), sizeof address_);
    }
    before_ = Unanswered();
  }

  // Whether somebody besides the fillers is waiting for an answer right now.
  bool KeepsWaiting() const { return Unanswered() > before_; }

 private:
  int Unanswered() const {
    char wanted[32];
    std::snprintf(wanted, sizeof wanted, " 0100007F:%04X 02 ", Port());
    std::ifstream table("/proc/net/tcp");
    int count = 0;
    for (std::string line; std::getline(table, line);) {
      count += line.find(wanted) != std::string::npos ? 1 : 0;
    }
    return count;
  }

  std::vector<UniqueFd> fillers_;
  int before_ = 0;
};

}  // namespace updown::testing
