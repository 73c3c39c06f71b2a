#pragma once

#include <chrono>
#include <cstddef>
#include <memory>

#include "engine/scheduler_context.h"
#include "platform/thread.h"

namespace updown {

inline constexpr std::chrono::milliseconds kIdleWait{10000};  // while no worker runs
inline constexpr std::size_t kHeaderSlots = 8;  // for what nobody has asked for by hand
inline constexpr std::chrono::milliseconds kExitWait{60000};  // for workers, at the end

// Runs until schedulerExit: keeps up to ten workers on runnable tasks, in the queue's order, from
// the first session on that the service grants; whoever holds the session wakes it then. What is
// left behind the user's tasks helps their folders, then fetches headers. At its end
// running tasks go to Stopped, their connections are cut, and it waits for the workers, at most
// kExitWait.
void SchedulerThread(const std::shared_ptr<SchedulerContext>& context);

// The scheduler's thread as the window holds it.
class Scheduler {
 public:
  explicit Scheduler(std::shared_ptr<SchedulerContext> context);
  ~Scheduler();  // tells it to end, without waiting
  Scheduler(const Scheduler&) = delete;
  Scheduler& operator=(const Scheduler&) = delete;

  // Tells it to end and waits, at most `limit`. True if it and all workers have ended; if not, the
  // process must end without destroying what they use.
  bool Stop(std::chrono::milliseconds limit);

 private:
  std::shared_ptr<SchedulerContext> context_;
  std::unique_ptr<Thread> thread_;
};

}  // namespace updown
