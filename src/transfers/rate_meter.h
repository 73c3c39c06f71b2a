#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace updown {

// How fast a transfer is. Ticks are in ms and wrap at 32 bits, rates are in bytes per second.
class RateMeter {
 public:
  // Samples are at least this far apart, so that bursts of blocks make no rates of their own.
  static constexpr std::uint32_t kLeastSpan = 250;

  // A run begins with so many bytes there. Time between runs does not count; a run that begins from
  // nothing begins the average anew.
  void Begin(std::uint64_t bytes, std::uint32_t now);

  // The mean of the last five samples, the first one counting as five. Nothing if it is too early
  // for another one, or if nothing has moved.
  std::optional<float> Sample(std::uint64_t bytes, std::uint32_t now);

  // Over all that was measured. Nothing if nothing has moved.
  std::optional<float> Average(std::uint64_t bytes, std::uint32_t now);

  bool TooEarly(std::uint32_t now) const { return SinceSample(now) < kLeastSpan; }
  std::uint32_t SinceSample(std::uint32_t now) const { return now - lastTick_; }

 private:
  float Advance(std::uint64_t bytes, std::uint32_t now);

  std::uint64_t lastBytes_ = 0;
  std::uint32_t lastTick_ = 0;
  std::uint64_t moved_ = 0;
  std::uint64_t elapsed_ = 0;
  std::array<float, 5> samples_{};
  std::size_t taken_ = 0;
};

}  // namespace updown
