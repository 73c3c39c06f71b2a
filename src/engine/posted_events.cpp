#include "engine/posted_events.h"

#include <utility>

namespace updown {

PostedEvents::PostedEvents(std::shared_ptr<PostedCalls> calls, EngineEvents& receiver)
    : calls_(std::move(calls)), receiver_(receiver) {}

void PostedEvents::TaskStarted(TaskId task) noexcept {
  calls_->Post([&receiver = receiver_, task] { receiver.TaskStarted(task); });
}

void PostedEvents::BlockDone(TaskId task) noexcept {
  {
    const std::lock_guard lock(waiting_->mutex);
    if (!waiting_->tasks.insert(task).second) {
      return;
    }
  }
  calls_->Post([&receiver = receiver_, waiting = waiting_, task] {
    {
      // Before the counts are looked at: a block from now on is told anew.
      const std::lock_guard lock(waiting->mutex);
      waiting->tasks.erase(task);
    }
    receiver.BlockDone(task);
  });
}

void PostedEvents::TaskWaiting(TaskId task) noexcept {
  calls_->Post([&receiver = receiver_, task] { receiver.TaskWaiting(task); });
}

void PostedEvents::TaskEnded(TaskId task, const TransferResult& result) noexcept {
  calls_->Post([&receiver = receiver_, task, result] { receiver.TaskEnded(task, result); });
}

void PostedEvents::SaveNeeded() noexcept {
  calls_->Post([&receiver = receiver_] { receiver.SaveNeeded(); });
}

}  // namespace updown
