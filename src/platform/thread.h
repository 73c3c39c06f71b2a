#pragma once

#include <functional>
#include <memory>
#include <thread>

#include "platform/event.h"

namespace updown {

// A thread whose end can be waited for together with other events.
//
// Ended() is signalled as the last thing the thread does. Destroying the handle of a thread that
// has ended joins it; one that still runs is detached, so whatever its body touches must be kept
// alive by the body itself (captured shared_ptrs).
class Thread {
 public:
  // Empty when the system refuses another thread.
  static std::unique_ptr<Thread> Start(std::function<void()> body);

  ~Thread();
  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;

  const Event& Ended() const { return *ended_; }

 private:
  Thread() = default;
  std::shared_ptr<Event> ended_;
  std::thread thread_;
};

// How threads are started, so that a test can refuse one. Thread::Start in the program.
using ThreadStarter = std::function<std::unique_ptr<Thread>(std::function<void()>)>;

}  // namespace updown
