#include "transfers/transfer_texts.h"

#include <gtest/gtest.h>

namespace updown {
namespace {

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
