#include "transfers/rate_meter.h"

#include <gtest/gtest.h>

#include "transfers/transfer_texts.h"

namespace updown {
namespace {

TEST(RateMeter, SmoothsOverFiveSamples) {
  RateMeter meter;
  std::uint64_t bytes = 5000;
  std::uint32_t now = 0xFFFFFF00;  // over the wrap of the ticks
  meter.Begin(bytes, now);
  const std::tuple<std::uint32_t, std::uint32_t, float> steps[] = {
      {1000, 2048, 2048},     // fills all five
      {1000, 0, 1638.4F},     // a stall takes a fifth off: 8192 / 5
      {500, 1024, 1638.4F},   // 2048 B/s again
      {2000, 8192, 2048},     // 4096 B/s: 10240 / 5
      {1000, 1024, 1843.2F},  // 9216 / 5
      {1000, 512, 1536},      // in the place of the first: 7680 / 5
      {249, 500, -1},         // too early: counts in the next one
      {751, 500, 1736},       // in the place of the stall: 8680 / 5
  };
  for (const auto& [after, moved, rate] : steps) {
    EXPECT_FLOAT_EQ(meter.Sample(bytes += moved, now += after).value_or(-1), rate);
  }
  EXPECT_FLOAT_EQ(*meter.Average(bytes, now), 13800 / 7.5F) << "in the same millisecond too";

  // An hour's pause does not count, and the first sample behind it is not that of before.
  now += 3600000;
  meter.Begin(bytes, now);
  EXPECT_FLOAT_EQ(*meter.Sample(bytes += 1000, now += 500), 2000);
  EXPECT_FLOAT_EQ(*meter.Average(bytes, now), 14800 / 8.0F);
  meter.Begin(0, now);
  EXPECT_EQ(meter.Average(0, now += 1000), std::nullopt);
}

TEST(RateMeter, HasNoRateWithoutMovement) {
  RateMeter meter;
  meter.Begin(4ULL << 30, 0);
  EXPECT_EQ(meter.Sample(4ULL << 30, 1000), std::nullopt);
  EXPECT_EQ(meter.Sample(100, 2000), std::nullopt) << "begun anew";
  EXPECT_FLOAT_EQ(*meter.Sample(1100, 3000), 200);
}

TEST(TransferTexts, TellsRates) {
  const std::pair<float, const char*> cases[] = {
      {0.4F, "0 B/s"},           {1023.9F, "1024 B/s"},  {1024, "1.00 KB/s"},
      {1048575, "1024.00 KB/s"}, {1048576, "1.00 MB/s"}, {4294967296000.0F, "4000.00 GB/s"}};
  for (const auto& [rate, text] : cases) {
    EXPECT_EQ(FormatRate(rate), text) << rate;
  }
}

TEST(TransferTexts, TellsRemainingTime) {
  const std::pair<double, const char*> cases[] = {
      {0, "00 : 00 : 00 "},       {59.99, "00 : 00 : 59 "},
      {3661, "01 : 01 : 01 "},    {359999.9, "99 : 59 : 59 "},
      {360000, "100 : 00 : 00 "}, {4294967296.0, "1193046 : 28 : 16 "}};
  for (const auto& [seconds, text] : cases) {
    EXPECT_EQ(FormatRemaining(seconds), text) << seconds;
  }
}

}  // namespace
}  // namespace updown
