#include "platform/event.h"

#include <condition_variable>
#include <mutex>

namespace updown {
namespace {

// One lock for all events keeps a wait on several of them simple. There are a dozen at most.
struct Signals {
  std::mutex mutex;
  std::condition_variable changed;
};

Signals& AllSignals() {
  // Never destroyed: threads may outlive the statics of a process that ends.
  static auto& signals = *new Signals;
  return signals;
}

// A span beyond this would overflow the clock; nobody is there to see the difference.
constexpr std::chrono::milliseconds kLongestWait = std::chrono::hours(24 * 365);

}  // namespace

void Event::Set() {
  Signals& signals = AllSignals();
  const std::lock_guard lock(signals.mutex);
  signalled_ = true;
  signals.changed.notify_all();
}

void Event::Reset() {
  const std::lock_guard lock(AllSignals().mutex);
  signalled_ = false;
}

bool Event::IsSet() const {
  const std::lock_guard lock(AllSignals().mutex);
  return signalled_;
}

bool Event::WaitFor(std::chrono::milliseconds timeout) const {
  const Event* const self[] = {this};
  return WaitForAny(self, timeout).has_value();
}

std::optional<std::size_t> WaitForAny(std::span<const Event* const> events,
                                      std::optional<std::chrono::milliseconds> timeout) {
  std::optional<std::size_t> found;
  const auto signalled = [&] {
    for (std::size_t i = 0; i < events.size(); ++i) {
      if (events[i]->signalled_) {
        found = i;
        return true;
      }
    }
    return false;
  };
  Signals& signals = AllSignals();
  std::unique_lock lock(signals.mutex);
  if (timeout && *timeout < kLongestWait) {
    signals.changed.wait_for(lock, *timeout, signalled);
  } else {
    signals.changed.wait(lock, signalled);
  }
  return found;
}

}  // namespace updown
