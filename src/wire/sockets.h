#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

#include "platform/ticks.h"
#include "wire/attributes.h"

namespace updown {

// Socket work against an absolute deadline on the 32-bit tick counter. Values of 0 and above are
// counts or sockets; below 0 stand these codes or a negated errno.
inline constexpr int kDeadlinePassed = -536870918;  // 0xDFFFFFFA
inline constexpr int kPeerClosed = -536870915;      // 0xDFFFFFFD, receive only
inline constexpr int kWrongRelayHead = -536870916;  // 0xDFFFFFFC, see relay.h

inline constexpr std::uint32_t kSocketSpan = 60000;  // ms; what a caller without a limit takes

// An IPv4 address as four bytes in network order, in the machine's word. 0 is "none".
using Ipv4Address = std::uint32_t;

// The sockets of a group of threads, so that whoever ends the group can cut them all: a blocked
// connect, send or recv on a member then fails at once. A group may be part of a larger one, which
// outlives it and whose cut is a cut of both. Any thread.
class SocketGroup {
 public:
  explicit SocketGroup(SocketGroup* whole = nullptr) : whole_(whole) {}

  // False once the group, or the larger one, has been cut: the socket is not taken in and must be
  // given up.
  bool Add(int socket);
  void Remove(int socket);
  void CutAll();
  bool IsCut() const { return cut_ || (whole_ != nullptr && whole_->IsCut()); }

 private:
  SocketGroup* const whole_;
  std::mutex mutex_;
  std::vector<int> sockets_;
  std::atomic<bool> cut_{false};  // changes under the mutex
};

// A TCP socket connected to `address`, still non-blocking, close-on-exec, with keepalive on: a peer
// that is silently gone is given up within two minutes (first probe after 30 s of silence). Its
// number is never 0, so that 0 stays free for "no relay". A member of `group` (may be null) from
// the moment it exists; whoever closes it takes it out. Negative code: no socket remains.
int ConnectDeadline(Ipv4Address address, std::uint16_t port, std::uint32_t deadline,
                    SocketGroup* group = nullptr);

// Receives up to buffer.size() bytes: all of them if `exact`, else what the first receive yields.
// Returns the count, or a code; what came before a failure stays in the buffer. An empty buffer
// gives 0 without touching the socket.
int RecvDeadline(int socket, std::span<std::uint8_t> buffer, int flags, bool exact,
                 std::uint32_t deadline);

// The same for sending; a send that takes nothing ends it with 0. Never raises SIGPIPE.
int SendDeadline(int socket, Bytes data, int flags, bool exact, std::uint32_t deadline);

void SetBlocking(int socket, bool blocking);

// Closes the socket, first taking it out of `group` (may be null).
void CloseSocket(int socket, SocketGroup* group = nullptr);

}  // namespace updown
