#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "service/limits.h"
#include "wire/sockets.h"

namespace updown {

// A connection to the file service: one socket, joined to the service by the relay and closed by
// the destructor. One thread at a time uses it; Cut and WasCut are for any thread, as long as the
// object lives.
//
// No wait on it is without a bound: the silence limit counts from the last byte that moved, in
// either direction, and the deadline, while there is one, holds for all calls together. What fails
// closes the connection, since its place in the stream is unknown from then on; later calls fail at
// once.
class Connection {
 public:
  using Clock = std::chrono::steady_clock;

  // Closed. `group` (may be null) outlives it and may cut it along with others.
  explicit Connection(SocketGroup* group = nullptr) : cutters_(group) {}
  ~Connection() { Close(); }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // Closes what is open, then resolves the name and connects through the relay: until the deadline,
  // or for kOpeningLimit if there is none. 0 or result::kConnection. A connection that was cut
  // stays so; for another try make another one.
  int Open(std::string_view serverName, std::uint16_t port);
  // Closes what is open and takes over a connected stream socket; 0 or result::kConnection.
  int Adopt(int socket);
  void Close();
  bool IsOpen() const { return socket_ >= 0; }

  // Ends it for good from any thread: a call that waits fails at once with ECANCELED, and so does
  // each one after it.
  void Cut() { cutters_.CutAll(); }
  bool WasCut() const { return cutters_.IsCut(); }

  // At first kRequestSilence and no deadline.
  void SetSilenceLimit(std::chrono::milliseconds limit) { silence_ = limit; }
  void SetDeadline(std::optional<Clock::time_point> deadline) { deadline_ = deadline; }

  // A request begins. RequestStarted tells from then on whether anything of it may have gone out:
  // if nothing has, repeating it on another connection cannot do its work twice.
  void BeginRequest() { requestStarted_ = false; }
  bool RequestStarted() const { return requestStarted_; }

  // What can be seen of an open connection without waiting. The service speaks only when asked:
  // between two requests either of them means that the next one would get no reply of its own.
  bool PeerHasClosed() const { return Peek() == Arrived::End; }
  bool HasUnreadBytes() const { return Peek() == Arrived::Data; }

  // Why the connection failed last, as an errno: ETIMEDOUT for silence or the deadline, ECONNRESET
  // also for an orderly end, ECANCELED for a cut, EMSGSIZE for what can never fit. 0: it has not,
  // or no relay is in the environment.
  int LastError() const { return lastError_; }

  // Send or receive at least one byte, at most the span's size, and wait for it. 0, or
  // result::kConnection with the connection closed. `moved` is the count.
  int Send(Bytes bytes, std::size_t& moved);
  int Receive(std::span<std::uint8_t> space, std::size_t& moved);
  // The same into an empty pipe, without passing through this process. `moved` is 0 where the
  // system cannot do that, with the connection as it was.
  int ReceiveInto(int pipe, std::size_t most, std::size_t& moved);

  // Closes, with `error` as the reason, and returns result::kConnection.
  int Fail(int error);

 private:
  enum class Arrived { Nothing, Data, End };
  Arrived Peek() const;
  template <typename Move>
  int MoveSome(short events, std::size_t& moved, Move move);
  // 0 once one of the events is there, else an errno.
  int Wait(short events, Clock::time_point since) const;
  std::chrono::milliseconds TimeLeft(Clock::time_point since) const;

  SocketGroup cutters_;
  int socket_ = -1;
  std::chrono::milliseconds silence_ = kRequestSilence;
  std::optional<Clock::time_point> deadline_;
  bool requestStarted_ = false;
  int lastError_ = 0;
};

}  // namespace updown
