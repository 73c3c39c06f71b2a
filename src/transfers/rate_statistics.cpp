#include "transfers/rate_statistics.h"

#include <numeric>

namespace updown {
namespace {

constexpr double kMillisecondsPerSecond = 1000;

// Moves the record's clock to `now` and returns the time since the last sample, 0 for none. As a
// 32-bit float a span can round up to 2^32, so it goes through a wider integer on its way back.
float Advance(TransferTask& task, std::uint32_t now) {
  TransferStatistics& statistics = task.record->statistics;
  const auto span = static_cast<float>(now - statistics.lastSampleTick);
  if (span == 0) {
    return 0;
  }
  statistics.lastSampleTick = now;
  if (task.childRecord) {
    task.childRecord->statistics.lastSampleTick = now;
  }
  statistics.elapsedTicks += static_cast<std::uint32_t>(static_cast<std::uint64_t>(span));
  return span;
}

float Smooth(TransferStatistics& statistics, float instant) {
  auto& samples = statistics.rateSamples;
  if (statistics.rateIndex < 0) {
    samples.fill(instant);
    statistics.rateIndex = 1;
    return instant;
  }
  const auto place = static_cast<std::size_t>(statistics.rateIndex) % samples.size();
  samples[place] = instant;
  statistics.rateIndex = static_cast<std::int16_t>((place + 1) % samples.size());
  return static_cast<float>(std::accumulate(samples.begin(), samples.end(), 0.0) * 0.2);
}

}  // namespace

void StartStatistics(TransferTask& task, std::uint32_t now) {
  TransferStatistics& statistics = task.record->statistics;
  statistics.elapsedTicks = 0;
  statistics.lastSampleBytes = task.Bytes();
  statistics.startBytes = statistics.lastSampleBytes;
  statistics.startTick = now;
  statistics.lastSampleTick = now;
  statistics.rateIndex = -1;
}

void ContinueStatistics(TransferTask& task, std::uint32_t now) {
  TransferStatistics& statistics = task.record->statistics;
  const std::uint32_t bytes = task.Bytes();
  if (bytes == 0) {
    StartStatistics(task, now);
  }
  statistics.lastSampleBytes = bytes;
  statistics.lastSampleTick = now;
}

std::optional<RateSample> TakeSample(TransferTask& task, std::uint32_t now) {
  if (now - task.record->statistics.lastSampleTick < kLeastSampleSpan) {
    return std::nullopt;
  }
  const float span = Advance(task, now);
  TransferRecord& record = *task.record;
  const std::uint32_t bytes = task.Bytes();
  RateSample sample;
  if (task.childRecord || record.totalBytes != 0) {
    // Counts go over their wrap; a task that starts over has fewer bytes than before.
    constexpr std::uint32_t kMostBytes = 0x7FFFFFFF;
    std::uint32_t moved = bytes - record.statistics.lastSampleBytes;
    moved = moved > kMostBytes ? 0 : moved;
    sample.rate = Smooth(record.statistics, static_cast<float>(moved / static_cast<double>(span) *
                                                               kMillisecondsPerSecond));
  }
  record.statistics.lastSampleBytes = bytes;
  return sample;
}

FinalRate TakeFinalRate(TransferTask& task, std::uint32_t now) {
  Advance(task, now);
  const TransferRecord& record = *task.record;
  const TransferRecord* child = task.childRecord.get();
  FinalRate rate;
  if (record.totalBytes == 0 && (child == nullptr || child->totalBytes == 0)) {
    return rate;
  }
  std::uint32_t moved = record.doneBytes;
  if (record.isFolder != 0 && child != nullptr) {
    moved += child->doneBytes;
  }
  moved -= record.statistics.startBytes;
  // A sum of spans that has wrapped to exactly 0 tells no average.
  const std::uint32_t elapsed = record.statistics.elapsedTicks;
  rate.average =
      elapsed == 0
          ? 0.0F
          : static_cast<float>(moved / static_cast<double>(elapsed) * kMillisecondsPerSecond);
  return rate;
}

}  // namespace updown
