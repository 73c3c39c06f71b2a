#include "platform/window.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include "platform/event.h"
#include "tests/support/window_pump.h"

namespace updown {
namespace {

constexpr std::chrono::milliseconds kLongWait = std::chrono::seconds(20);

// Sends one message from a thread of its own.
class Sender {
 public:
  explicit Sender(WindowHandle window)
      : thread_([this, window] {
          result_ = SendWindowMessage(window, 1, 2, 3);
          done_.Set();
        }) {}
  ~Sender() { thread_.join(); }

  const Event& Done() const { return done_; }
  MessageResult Result() const { return done_.WaitFor(kLongWait) ? result_ : -1; }

 private:
  MessageResult result_ = -1;
  Event done_;
  std::thread thread_;
};

TEST(Window, ASendGivesTheResultOnEveryThread) {
  test::WindowPump pump;
  const std::thread::id here = std::this_thread::get_id();
  const WindowHandle window = pump.MakeWindow([here](const WindowMessage& message) {
    EXPECT_EQ(std::this_thread::get_id(), here);
    return MessageResult{message.number} * 100 + static_cast<MessageResult>(message.wParam * 10) +
           message.lParam;
  });
  EXPECT_EQ(SendWindowMessage(window, 1, 2, 3), 123);
  const Sender sender(window);
  EXPECT_TRUE(pump.RunUntil([&] { return sender.Done().IsSet(); }));
  EXPECT_EQ(sender.Result(), 123);
}

TEST(Window, AHandleWithoutAWindowTakesNothing) {
  EXPECT_FALSE(IsWindow({}));
  test::WindowPump pump;
  const WindowHandle window = pump.MakeWindow([](const WindowMessage&) { return 1; });
  pump.DestroyWindow(window);
  pump.DestroyWindow(window);
  EXPECT_FALSE(IsWindow(window));
  EXPECT_FALSE(PostWindowMessage(window, 1, 0, 0));
  EXPECT_EQ(SendWindowMessage(window, 1, 0, 0), 0);
  EXPECT_NE(pump.MakeWindow([](const WindowMessage&) { return 1; }), window);
}

// What a message box does: its loop has to be woken for what the outer one had not reached.
TEST(Window, ALoopInsideAHandlerGoesOnInOrder) {
  int wakes = 0;
  MessageQueue queue([&wakes] { ++wakes; });
  std::vector<std::uint32_t> seen;
  const WindowHandle window = queue.Register([&](const WindowMessage& message) {
    seen.push_back(message.number);
    if (message.number == 1) {
      EXPECT_EQ(wakes, 2);
      queue.Dispatch();
    }
    return 0;
  });
  for (const std::uint32_t number : {1U, 2U, 3U}) {
    EXPECT_TRUE(PostWindowMessage(window, number, 0, 0));
  }
  EXPECT_EQ(wakes, 1);
  queue.Dispatch();
  EXPECT_EQ(seen, (std::vector<std::uint32_t>{1, 2, 3}));
}

TEST(Window, AWindowMayGoInItsOwnHandler) {
  test::WindowPump pump;
  WindowHandle window;
  const auto five = std::make_shared<int>(5);
  window = pump.MakeWindow([&pump, &window, five](const WindowMessage&) {
    pump.DestroyWindow(window);
    return *five;  // the procedure itself is still whole
  });
  const Sender sender(window);
  EXPECT_TRUE(pump.RunUntil([&] { return sender.Done().IsSet(); }));
  EXPECT_EQ(sender.Result(), 5);
}

TEST(Window, WaitingSendersGetZeroWhenWindowOrQueueGoes) {
  Event woken;
  for (const bool queueToo : {false, true}) {
    woken.Reset();
    auto queue = std::make_unique<MessageQueue>([&woken] { woken.Set(); });
    const WindowHandle window = queue->Register([](const WindowMessage&) { return 7; });
    const Sender sender(window);
    ASSERT_TRUE(woken.WaitFor(kLongWait));
    if (queueToo) {
      queue.reset();
    } else {
      queue->Unregister(window);
      queue->Dispatch();
    }
    EXPECT_EQ(sender.Result(), 0);
    EXPECT_FALSE(IsWindow(window));
  }
}

TEST(Window, AHandlerThatPostsForEverLeavesTheLoopItsTurn) {
  int wakes = 0;
  MessageQueue queue([&wakes] { ++wakes; });
  WindowHandle window;
  window = queue.Register([&window](const WindowMessage&) {
    PostWindowMessage(window, 1, 0, 0);
    return 0;
  });
  PostWindowMessage(window, 1, 0, 0);
  const int before = wakes;
  queue.Dispatch();
  EXPECT_GT(wakes, before);
}

TEST(Window, QueuesComeAndGoUnderBusySenders) {
  std::atomic<std::uint64_t> target{0};
  std::atomic<bool> stop{false};
  std::vector<std::thread> senders;
  for (int i = 0; i < 4; ++i) {
    senders.emplace_back([&target, &stop] {
      while (!stop) {
        SendWindowMessage({target.load()}, 1, 0, 0);
        PostWindowMessage({target.load()}, 1, 0, 0);
        std::this_thread::yield();
      }
    });
  }
  for (int round = 0; round < 500; ++round) {
    auto lives = std::make_unique<int>(round);  // a call after the end would touch freed memory
    MessageQueue queue([] {});
    const WindowHandle window = queue.Register([&lives](const WindowMessage&) { return ++*lives; });
    target = window.value;
    std::this_thread::yield();
    queue.Dispatch();
    if (round % 2 == 0) {
      queue.Unregister(window);
      lives.reset();
      queue.Dispatch();
    }
  }
  stop = true;
  for (std::thread& sender : senders) {
    sender.join();
  }
}

}  // namespace
}  // namespace updown
