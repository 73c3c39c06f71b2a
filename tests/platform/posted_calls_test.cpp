#include "platform/posted_calls.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include "platform/event.h"

namespace updown {
namespace {

TEST(PostedCalls, TheEndMayComeInACallAndFreesWhatWaits) {
  std::optional<PostedCalls> calls;
  calls.emplace([] {});
  const auto held = std::make_shared<int>(5);
  int ran = 0;
  calls->Post([&, held] {
    ran += *held;
    calls->Close();
    EXPECT_FALSE(calls->Post([] {}));
    calls.reset();
    ran += *held;  // the call itself is still whole
  });
  calls->Post([&, held] { ran += 100; });
  calls->Run();
  EXPECT_EQ(ran, 10);
  EXPECT_EQ(held.use_count(), 1);
}

// No call runs behind the end: it would touch what has been freed.
TEST(PostedCalls, QueuesComeAndGoUnderBusyThreads) {
  for (int round = 0; round < 300; ++round) {
    Event woken;
    PostedCalls calls([&woken] { woken.Set(); });
    auto ran = std::make_unique<int>(0);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
      threads.emplace_back([&] {
        while (calls.Post([&ran] { ++*ran; })) {
          std::this_thread::yield();
        }
      });
    }
    for (int turn = 0; turn < round % 5; ++turn) {
      ASSERT_TRUE(woken.WaitFor(std::chrono::seconds(20)));
      woken.Reset();
      calls.Run();
    }
    calls.Close();
    ran.reset();
    for (std::thread& thread : threads) {
      thread.join();
    }
    calls.Run();
  }
}

}  // namespace
}  // namespace updown
