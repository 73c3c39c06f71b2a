#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <utility>

#include "platform/window.h"

namespace updown::test {

// A message queue that the test's own thread dispatches, and windows made of plain functions.
class WindowPump {
 public:
  WindowHandle MakeWindow(WindowProcedure procedure) {
    return queue_.Register(std::move(procedure));
  }
  void DestroyWindow(WindowHandle window) { queue_.Unregister(window); }

  // Dispatches until `done` holds, looking again at each message and every few milliseconds. False
  // if `limit` passes first.
  bool RunUntil(const std::function<bool()>& done,
                std::chrono::milliseconds limit = std::chrono::seconds(20)) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!done()) {
      if (std::chrono::steady_clock::now() > deadline) {
        return false;
      }
      {
        std::unique_lock lock(mutex_);
        woken_.wait_for(lock, std::chrono::milliseconds(5), [this] { return pending_; });
        pending_ = false;
      }
      queue_.Dispatch();
    }
    return true;
  }

 private:
  std::mutex mutex_;
  std::condition_variable woken_;
  bool pending_ = false;
  MessageQueue queue_{[this] {
    const std::lock_guard lock(mutex_);
    pending_ = true;
    woken_.notify_one();
  }};
};

}  // namespace updown::test
