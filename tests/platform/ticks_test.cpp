#include "platform/ticks.h"

#include <gtest/gtest.h>

namespace updown {
namespace {

TEST(Ticks, TimeLeftIsRightAcrossTheWrap) {
  EXPECT_EQ(TicksLeft(5, 0xFFFFFFF0U), 21);
  EXPECT_EQ(TicksLeft(0xFFFFFFF0U, 5), -21);
}

}  // namespace
}  // namespace updown
