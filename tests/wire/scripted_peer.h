#pragma once

#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/unique_fd.h"

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

// A peer on a socket pair that runs its script on a thread of its own.
class ScriptedPeer {
 public:
  explicit ScriptedPeer(std::vector<Step> steps, std::size_t piece = 0) {
    int pair[2] = {-1, -1};
    socketpair(AF_UNIX, SOCK_STREAM, 0, pair);
    client_ = UniqueFd(pair[0]);
    thread_ = std::thread([this, peer = UniqueFd(pair[1]), steps = std::move(steps), piece] {
      fault_ = PlayScript(peer.Get(), steps, piece);
      char byte = 0;
      if (recv(peer.Get(), &byte, 1, 0) > 0) {
        fault_ += "more was sent than expected";
      }
    });
  }
  ~ScriptedPeer() { Finish(); }
  ScriptedPeer(const ScriptedPeer&) = delete;
  ScriptedPeer& operator=(const ScriptedPeer&) = delete;

  // The other end, which is the caller's from now on.
  int TakeSocket() { return client_.Release(); }

  // Hangs up and tells what was not as written; empty if all was.
  std::string Finish() {
    client_.Reset();
    if (thread_.joinable()) {
      thread_.join();
    }
    return fault_;
  }

 private:
  UniqueFd client_;
  std::string fault_;
  std::thread thread_;
};

}  // namespace updown::testing
