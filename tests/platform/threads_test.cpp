#include <gtest/gtest.h>

#include "platform/thread.h"
#include "platform/ticks.h"

namespace updown {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kLong = std::chrono::seconds(20);

TEST(Thread, TellsItsEndAfterReleasingWhatItHeld) {
  for (int i = 0; i < 500; ++i) {
    const auto held = std::make_shared<Event>();
    const auto thread = Thread::Start([held] { held->WaitFor(kLong); });
    EXPECT_FALSE(thread->Ended().IsSet());
    held->Set();
    ASSERT_TRUE(thread->Ended().WaitFor(kLong));
    EXPECT_EQ(held.use_count(), 1);
  }
}

TEST(Thread, ARunningOneOutlivesItsHandle) {
  const auto go = std::make_shared<Event>();
  const auto done = std::make_shared<Event>();
  Thread::Start([go, done] {
    go->WaitFor(kLong);
    done->Set();
  }).reset();
  go->Set();
  EXPECT_TRUE(done->WaitFor(kLong));
}

TEST(Ticks, TimeLeftIsRightAcrossTheWrap) {
  EXPECT_EQ(TicksLeft(5, 0xFFFFFFF0U), 21);
  EXPECT_EQ(TicksLeft(0xFFFFFFF0U, 5), -21);
}

}  // namespace
}  // namespace updown
