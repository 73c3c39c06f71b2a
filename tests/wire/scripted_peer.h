#pragma once

#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

namespace updown::testing {

// What the peer waits for, byte by byte, and what it then sends, so many times.
struct Step {
  std::string expect;
  std::string answer;
  std::size_t times = 1;
};

// Sends in pieces of `piece` bytes (0: in one), each only when the one before has been taken.
inline void SendPieces(int socket, std::string_view bytes, std::size_t piece) {
  while (!bytes.empty()) {
    const auto sent = send(socket, bytes.data(),
                           piece == 0 ? bytes.size() : std::min(piece, bytes.size()), MSG_NOSIGNAL);
    if (sent < 1) {
      return;
    }
    bytes.remove_prefix(static_cast<std::size_t>(sent));
    for (int queued = 1; piece != 0 && queued != 0; ioctl(socket, SIOCOUTQ, &queued)) {
      std::this_thread::yield();
    }
  }
}

// Plays the steps on one socket and then closes its direction. Returns what was not as written,
// empty if all was.
inline std::string PlayScript(int socket, const std::vector<Step>& steps, std::size_t piece) {
  const timeval patience{10, 0};
  setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  std::string fault;
  for (const Step& step : steps) {
    std::string seen(step.expect.size(), '\0');
    const auto count = seen.empty() ? 0 : recv(socket, seen.data(), seen.size(), MSG_WAITALL);
    if (seen != step.expect) {
      fault = "step " + std::to_string(&step - &steps[0]) + ": " + std::to_string(count) + " bytes";
      break;
    }
    for (std::size_t i = 0; i < step.times; ++i) {
      SendPieces(socket, step.answer, piece);
    }
  }
  shutdown(socket, SHUT_WR);
  return fault;
}

}  // namespace updown::testing
