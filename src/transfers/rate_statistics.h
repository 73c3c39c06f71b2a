#pragma once

#include <cstdint>
#include <optional>

#include "engine/transfer_task.h"

namespace updown {

// Rates of a watched task, worked out from the statistics fields of its record. Ticks are in ms and
// wrap at 32 bits, bytes wrap at 32 bits, rates are in bytes per second. Main thread only.

// Begins the statistics of a task that gets a row.
void StartStatistics(TransferTask& task, std::uint32_t now);

// A run begins: the time since the last one does not count. From the start, if nothing is there.
void ContinueStatistics(TransferTask& task, std::uint32_t now);

// What one sample yields. No rate: nothing has told the task's size yet.
struct RateSample {
  std::optional<float> rate;  // smoothed over the last five samples, the first one filling all five
};

// Samples are at least this far apart, in ms, so that bursts of blocks make no rates of their own.
inline constexpr std::uint32_t kLeastSampleSpan = 250;

// Nothing, with no statistic changed, if it is too early for another sample.
std::optional<RateSample> TakeSample(TransferTask& task, std::uint32_t now);

// The rate over the whole time that the task was watched, for a task that is Finished. No average:
// neither record has a size.
struct FinalRate {
  std::optional<float> average;
};

FinalRate TakeFinalRate(TransferTask& task, std::uint32_t now);

}  // namespace updown
