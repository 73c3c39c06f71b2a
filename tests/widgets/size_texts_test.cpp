#include "widgets/size_texts.h"

#include <gtest/gtest.h>

namespace updown {
namespace {

TEST(SizeTextsTest, ChangeUnitAtEachPowerOf1024) {
  const std::pair<std::uint32_t, const char*> cases[] = {
      {0, ""},
      {1023, "1023 B"},
      {1024, "1 KB"},
      {1048575, "1023 KB"},
      {1048576, "1.00 MB"},
      {1610612, "1.54 MB"},
      {1073741823, "1024.00 MB"},
      {1073741824, "1.000 GB"},
      {0xFFFFFFFF, "4.000 GB"},
  };
  for (const auto& [bytes, text] : cases) {
    EXPECT_EQ(FormatSize(bytes), text);
  }
  EXPECT_EQ(FormatKiloBytes(0xFFFFFFFF), "4194303 KB");
}

}  // namespace
}  // namespace updown
