#include "platform/ticks.h"

#include <chrono>

#include "platform/immortal.h"

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
  static Immortal<MonotonicTicks> ticks;
  return ticks.Get();
}

}  // namespace updown
