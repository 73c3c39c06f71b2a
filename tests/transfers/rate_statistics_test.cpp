#include "transfers/rate_statistics.h"

#include <gtest/gtest.h>

namespace updown {
namespace {

constexpr float kRefused = -1;
constexpr float kNoRate = -2;

class RateStatistics : public ::testing::Test {
 protected:
  RateStatistics() {
    task_.record = std::make_shared<TransferRecord>();
    Record().totalBytes = 20000;
  }
  TransferRecord& Record() { return *task_.record; }
  TransferStatistics& Statistics() { return task_.record->statistics; }

  void Start(std::uint32_t now, std::uint32_t bytes) {
    Record().doneBytes = bytes;
    now_ = now;
    StartStatistics(task_, now);
  }
  float Sample(std::uint32_t after, std::uint32_t moved) {
    now_ += after;
    Record().doneBytes += moved;
    const auto sample = TakeSample(task_, now_);
    return !sample ? kRefused : sample->rate.value_or(kNoRate);
  }
  float Average(std::uint32_t after) {
    const auto rate = TakeFinalRate(task_, now_ += after);
    return rate.average.value_or(kNoRate);
  }

  TransferTask task_;
  std::uint32_t now_ = 0;
};

TEST_F(RateStatistics, SmoothsOverFiveSamples) {
  Start(1000, 0);
  const std::tuple<std::uint32_t, std::uint32_t, float> steps[] = {
      {1000, 2048, 2048},     // fills all five
      {1000, 0, 1638.4F},     // a stall takes a fifth off: 8192 / 5
      {500, 1024, 1638.4F},   // 2048 B/s again
      {2000, 8192, 2048},     // 4096 B/s: 10240 / 5
      {1000, 1024, 1843.2F},  // 9216 / 5
      {1000, 512, 1536},      // in the place of the first: 7680 / 5
      {249, 500, kRefused},   // too early: counts in the next one
      {751, 500, 1736},       // in the place of the stall: 8680 / 5
  };
  for (const auto& [after, moved, rate] : steps) {
    EXPECT_FLOAT_EQ(Sample(after, moved), rate);
  }
  EXPECT_EQ(Statistics().elapsedTicks, 7500U);
  EXPECT_EQ(Statistics().lastSampleTick, 8500U);
  EXPECT_EQ(Statistics().startTick, 1000U);
  EXPECT_FLOAT_EQ(Average(0), 13800 / 7.5F) << "an end shows in the same millisecond too";
}

TEST_F(RateStatistics, GoesOverTheWrapOfTicksAndBytes) {
  Start(0xFFFFFF00, 0xFFFFFFF0);
  EXPECT_FLOAT_EQ(Sample(0x200, 512), 1000);
  EXPECT_EQ(Statistics().elapsedTicks, 512U);
  EXPECT_EQ(Statistics().lastSampleTick, 0x100U);
  EXPECT_FLOAT_EQ(Average(512), 500);
}

TEST_F(RateStatistics, HasNoRateWithoutASize) {
  Record().totalBytes = 0;
  Start(0, 0);
  EXPECT_EQ(Sample(1000, 100), kNoRate);
  EXPECT_EQ(Statistics().rateIndex, -1);
  EXPECT_EQ(Average(1000), kNoRate);
  EXPECT_EQ(Statistics().elapsedTicks, 2000U);
  Record().totalBytes = 20000;
  EXPECT_FLOAT_EQ(Sample(1000, 100), 100);
}

TEST_F(RateStatistics, CountsTheFileInFlight) {
  task_.childRecord = std::make_shared<TransferRecord>();
  task_.childRecord->doneBytes = 1000;
  Record().totalBytes = 0;
  Start(0, 500);
  EXPECT_EQ(Statistics().startBytes, 1500U);
  task_.childRecord->doneBytes = 3000;
  EXPECT_FLOAT_EQ(Sample(1000, 0), 2000);
  EXPECT_EQ(task_.childRecord->statistics.lastSampleTick, 1000U);
  task_.childRecord->totalBytes = 3000;
  Record().isFolder = 1;
  EXPECT_FLOAT_EQ(Average(1000), 1000);
}

}  // namespace
}  // namespace updown
