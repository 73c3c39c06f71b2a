#include "transfers/rate_meter.h"

#include <numeric>

namespace updown {
namespace {

std::optional<float> RateOf(double bytes, double ticks) {
  constexpr double kTicksPerSecond = 1000;
  return bytes > 0 && ticks > 0 ? std::optional(static_cast<float>(bytes / ticks * kTicksPerSecond))
                                : std::nullopt;
}

}  // namespace

void RateMeter::Begin(std::uint64_t bytes, std::uint32_t now) {
  if (bytes == 0) {
    moved_ = 0;
    elapsed_ = 0;
  }
  lastBytes_ = bytes;
  lastTick_ = now;
  taken_ = 0;
}

// The rate since the last time. A transfer that starts over has fewer bytes than before.
float RateMeter::Advance(std::uint64_t bytes, std::uint32_t now) {
  const std::uint64_t moved = bytes > lastBytes_ ? bytes - lastBytes_ : 0;
  const std::uint32_t span = SinceSample(now);
  moved_ += moved;
  elapsed_ += span;
  lastBytes_ = bytes;
  lastTick_ = now;
  return RateOf(static_cast<double>(moved), span).value_or(0);
}

std::optional<float> RateMeter::Sample(std::uint64_t bytes, std::uint32_t now) {
  if (TooEarly(now)) {
    return std::nullopt;
  }
  const float rate = Advance(bytes, now);
  if (taken_ == 0) {
    samples_.fill(rate);
  }
  samples_[taken_++ % samples_.size()] = rate;
  const float sum = std::accumulate(samples_.begin(), samples_.end(), 0.0F);
  return sum > 0 ? std::optional(sum / static_cast<float>(samples_.size())) : std::nullopt;
}

std::optional<float> RateMeter::Average(std::uint64_t bytes, std::uint32_t now) {
  Advance(bytes, now);
  return RateOf(static_cast<double>(moved_), static_cast<double>(elapsed_));
}

}  // namespace updown
