#pragma once

#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace updown::testing {

// What the peer waits for, byte by byte, and what it then sends.
struct Step {
  std::string expect;
  std::string answer;
};

// Plays the steps on one socket and then closes its direction. Returns what was not as written,
// empty if all was. `piece` > 0 sends answers in pieces of that size, each only when the one before
// has been taken.
inline std::string PlayScript(int socket, const std::vector<Step>& steps, std::size_t piece) {
  const timeval patience{10, 0};
  setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  std::string fault;
  for (std::size_t at = 0; at < steps.size() && fault.empty(); ++at) {
    std::string seen(steps[at].expect.size(), '\0');
    const auto count = seen.empty() ? 0 : recv(socket, seen.data(), seen.size(), MSG_WAITALL);
    if (count != static_cast<ssize_t>(seen.size()) || seen != steps[at].expect) {
      fault = "step " + std::to_string(at) + " differs after " + std::to_string(count) + " bytes";
    }
    const std::string& answer = steps[at].answer;
    const std::size_t size = piece == 0 ? answer.size() : piece;
    for (std::size_t sent = 0; sent < answer.size() && fault.empty();) {
      const auto moved =
          send(socket, &answer[sent], std::min(size, answer.size() - sent), MSG_NOSIGNAL);
      sent += static_cast<std::size_t>(std::max<ssize_t>(moved, 1));
      for (int queued = 1; piece != 0 && moved > 0 && queued != 0;) {
        std::this_thread::yield();
        ioctl(socket, SIOCOUTQ, &queued);
      }
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
    client_ = pair[0];
    peer_ = pair[1];
    thread_ = std::thread([this, steps = std::move(steps), piece] {
      fault_ = PlayScript(peer_, steps, piece);
      char byte = 0;
      if (recv(peer_, &byte, 1, 0) > 0 && fault_.empty()) {
        fault_ = "more was sent than expected";
      }
    });
  }
  ~ScriptedPeer() { Finish(); }
  ScriptedPeer(const ScriptedPeer&) = delete;
  ScriptedPeer& operator=(const ScriptedPeer&) = delete;

  int Socket() const { return client_; }

  // Hangs up and tells what was not as written; empty if all was.
  std::string Finish() {
    if (thread_.joinable()) {
      close(client_);
      thread_.join();
      close(peer_);
    }
    return fault_;
  }

 private:
  int client_ = -1;
  int peer_ = -1;
  std::string fault_;
  std::thread thread_;
};

}  // namespace updown::testing
