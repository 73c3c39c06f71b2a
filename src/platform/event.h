#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <span>

namespace updown {

// A manual-reset event: stays signalled until Reset. Any thread may call anything at any time; an
// event must outlive every wait on it.
class Event {
 public:
  Event() = default;
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;

  void Set();
  void Reset();
  bool IsSet() const;

  // True when signalled within `timeout`.
  bool WaitFor(std::chrono::milliseconds timeout) const;

 private:
  friend std::optional<std::size_t> WaitForAny(std::span<const Event* const> events,
                                               std::optional<std::chrono::milliseconds> timeout);
  bool signalled_ = false;  // guarded by the one mutex of event.cpp, which all events share
};

// Waits until one of `events` is signalled and returns the index of the first that is; nothing when
// `timeout` passed first. Without a timeout it waits for ever.
std::optional<std::size_t> WaitForAny(std::span<const Event* const> events,
                                      std::optional<std::chrono::milliseconds> timeout);

}  // namespace updown
