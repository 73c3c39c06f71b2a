#include "status/transfer_texts.h"

#include <gtest/gtest.h>

namespace updown {
namespace {

TEST(TransferTexts, TellsSizes) {
  const std::pair<std::uint32_t, const char*> cases[] = {{0, ""},
                                                         {1, "1 B"},
                                                         {1023, "1023 B"},
                                                         {1024, "1 KB"},
                                                         {2047, "1 KB"},
                                                         {1048575, "1023 KB"},
                                                         {1048576, "1.00 MB"},
                                                         {1610612, "1.54 MB"},
                                                         {1073741823, "1024.00 MB"},
                                                         {1073741824, "1.000 GB"},
                                                         {0xFFFFFFFF, "4.000 GB"}};
  for (const auto& [bytes, text] : cases) {
    EXPECT_EQ(FormatSize(bytes), text) << bytes;
  }
  EXPECT_EQ(FormatKiloBytes(0xFFFFFFFF), "4194303 KB");
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
