#include "platform/window.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include "platform/event.h"

namespace updown {
namespace {

constexpr std::chrono::milliseconds kLong = std::chrono::seconds(20);

// A queue with an event loop as simple as can be.
class Loop {
 public:
  MessageQueue& Queue() { return queue_; }

  // False if `done` was not signalled in a long time.
  bool RunUntil(const Event& done) {
    const Event* const either[] = {&done, &woken_};
    while (!done.IsSet()) {
      if (!WaitForAny(either, kLong)) {
        return false;
      }
      woken_.Reset();
      queue_.Dispatch();
    }
    return true;
  }

 private:
  Event woken_;
  MessageQueue queue_{[this] { woken_.Set(); }};
};

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
  MessageResult Result() const { return done_.WaitFor(kLong) ? result_ : -1; }

 private:
  MessageResult result_ = -1;
  Event done_;
  std::thread thread_;
};

TEST(Window, ASendGivesTheResultOnEveryThread) {
  Loop loop;
  const std::thread::id here = std::this_thread::get_id();
  const WindowHandle window = loop.Queue().Register([here](const WindowMessage& message) {
    EXPECT_EQ(std::this_thread::get_id(), here);
    return MessageResult{message.number} * 100 + static_cast<MessageResult>(message.wParam * 10) +
           message.lParam;
  });
  EXPECT_TRUE(IsWindow(window));
  EXPECT_EQ(SendWindowMessage(window, 1, 2, 3), 123);
  const Sender sender(window);
  EXPECT_TRUE(loop.RunUntil(sender.Done()));
  EXPECT_EQ(sender.Result(), 123);
}

TEST(Window, AHandleWithoutAWindowTakesNothing) {
  EXPECT_FALSE(IsWindow({}));
  Loop loop;
  const WindowHandle window = loop.Queue().Register([](const WindowMessage&) { return 1; });
  loop.Queue().Unregister(window);
  loop.Queue().Unregister(window);
  EXPECT_FALSE(IsWindow(window));
  EXPECT_FALSE(PostWindowMessage(window, 1, 0, 0));
  EXPECT_EQ(SendWindowMessage(window, 1, 0, 0), 0);
  EXPECT_NE(loop.Queue().Register([](const WindowMessage&) { return 1; }), window);
}

// What a message box does: its loop has to be woken for what the outer one had not reached.
TEST(Window, ALoopInsideAHandlerGoesOnInOrder) {
  Loop loop;
  std::vector<std::uint32_t> seen;
  Event last;
  const WindowHandle window = loop.Queue().Register([&](const WindowMessage& message) {
    seen.push_back(message.number);
    if (message.number == 1) {
      EXPECT_TRUE(loop.RunUntil(last));
    } else if (message.number == 3) {
      last.Set();
    }
    return 0;
  });
  for (const std::uint32_t number : {1U, 2U, 3U}) {
    EXPECT_TRUE(PostWindowMessage(window, number, 0, 0));
  }
  EXPECT_TRUE(loop.RunUntil(last));
  EXPECT_EQ(seen, (std::vector<std::uint32_t>{1, 2, 3}));
}

TEST(Window, AWindowMayGoInItsOwnHandler) {
  Loop loop;
  WindowHandle window;
  Event done;
  const auto five = std::make_shared<int>(5);
  window = loop.Queue().Register([&loop, &window, five](const WindowMessage&) {
    loop.Queue().Unregister(window);
    return *five;  // the procedure itself is still whole
  });
  const WindowHandle other = loop.Queue().Register([&](const WindowMessage&) {
    done.Set();
    return 0;
  });
  const Sender sender(window);
  EXPECT_TRUE(loop.RunUntil(sender.Done()));
  EXPECT_EQ(sender.Result(), 5);
  PostWindowMessage(other, 1, 0, 0);
  EXPECT_TRUE(loop.RunUntil(done));
}

TEST(Window, WaitingSendersGetZeroWhenWindowOrQueueGoes) {
  Event woken;
  for (const bool queueToo : {false, true}) {
    woken.Reset();
    auto queue = std::make_unique<MessageQueue>([&woken] { woken.Set(); });
    const WindowHandle window = queue->Register([](const WindowMessage&) { return 7; });
    const Sender sender(window);
    ASSERT_TRUE(woken.WaitFor(kLong));
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
  senders.reserve(4);
  for (int i = 0; i < 4; ++i) {
    senders.emplace_back([&target, &stop, i] {
      while (!stop) {
        const WindowHandle window{target.load()};
        if (i % 2 == 0) {
          SendWindowMessage(window, 1, 0, 0);
        } else {
          PostWindowMessage(window, 1, 0, 0);
        }
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
