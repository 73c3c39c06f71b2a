#pragma once

#include <cstdint>

namespace updown {

// Milliseconds since some fixed point, wrapping at 32 bits (about 49.7 days). Differences are taken
// modulo 2^32, so the wrap does no harm to a span below that. Any thread.
class TickCounter {
 public:
  virtual ~TickCounter() = default;
  virtual std::uint32_t Now() const = 0;
};

// The machine's monotonic clock. Lives as long as the process.
const TickCounter& SystemTicks();

// Time from now until `deadline`, negative when it has passed; right across the counter's wrap.
constexpr std::int32_t TicksLeft(std::uint32_t deadline, std::uint32_t now) {
  return static_cast<std::int32_t>(deadline - now);
}

}  // namespace updown
