#include "platform/ticks.h"

#include <chrono>

namespace updown {
namespace {

class MonotonicTicks : public TickCounter {
 public:
  std::uint32_t Now() const override {
    const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(
        std::chrono::duration_cast<std::chrono::milliseconds>(sinceStart).count());
  }
};

}  // namespace

const TickCounter& SystemTicks() {
  // Never destroyed: threads may outlive the statics of a process that ends.
  static const auto& ticks = *new MonotonicTicks;
  return ticks;
}

}  // namespace updown
