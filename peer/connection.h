#pragma once

#include <chrono>
#include <cstdint>

#include "peer/bytes.h"

namespace updown::peer {

// A file descriptor that is closed with its owner.
class Handle {
 public:
  explicit Handle(int fd = -1) : fd_(fd) {}
  ~Handle();
  Handle(Handle&& other) noexcept : fd_(other.Release()) {}
  Handle& operator=(Handle&& other) noexcept;
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  int Get() const { return fd_; }
  bool IsOpen() const { return fd_ >= 0; }
  int Release();

 private:
  int fd_;
};

// Raised once, and then every wait of every connection ends at once. Any thread.
class StopSignal {
 public:
  StopSignal();  // throws std::runtime_error when there is no descriptor left
  void Raise();
  int Descriptor() const { return event_.Get(); }

 private:
  Handle event_;
};

// One accepted socket, used by one thread. Nothing here waits without a bound, and nothing waits
// once the stop signal is raised.
class Connection {
 public:
  // `fragment`: the first 64 bytes of every send go one by one, the rest in odd pieces.
  Connection(Handle socket, const StopSignal& stop, bool fragment);

  // The two return false when the peer has gone, the bound has passed or the stop signal was
  // raised. ReceiveExact waits `patience` for the first byte, and one minute for each further
  // piece.
  bool ReceiveExact(std::uint8_t* dest, std::size_t size, std::chrono::milliseconds patience);
  bool Send(View bytes);

  // False if the stop signal cut the pause short.
  bool Pause(std::chrono::milliseconds duration) const;
  // Returns when the peer closes; what it sends is thrown away.
  void WaitForClose();

 private:
  bool WaitFor(short events, std::chrono::milliseconds patience) const;
  bool SendPiece(View bytes);

  Handle socket_;
  const StopSignal& stop_;
  bool fragment_;
};

}  // namespace updown::peer
