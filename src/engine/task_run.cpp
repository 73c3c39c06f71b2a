#include "engine/task_run.h"

namespace updown {

bool TaskRun::WaitUntil(Clock::time_point time) {
  if (Clock::now() >= time) {  // a pace that is over needs no help of the system's
    return !Stopping();
  }
  std::unique_lock lock(mutex_);
  stopped_.wait_until(lock, stop_.get_token(), time, [] { return false; });
  return !Stopping();
}

bool TaskRun::BeginBlock() {
  const std::lock_guard lock(mutex_);
  if (Stopping()) {
    return false;
  }
  ++blocks_;
  return true;
}

void TaskRun::EndBlock() {
  const std::lock_guard lock(mutex_);
  if (--blocks_ == 0 && cutAt_) {
    // What else is under way has no block to bring home.
    cutAt_.reset();
    sockets_.CutAll();
  }
}

void TaskRun::EndSoon() {
  stop_.request_stop();
  const std::lock_guard lock(mutex_);
  if (blocks_ > 0) {
    cutAt_ = Clock::now() + kBlockInHand;
  } else {
    sockets_.CutAll();
  }
}

void TaskRun::Cut() {
  stop_.request_stop();
  const std::lock_guard lock(mutex_);
  cutAt_.reset();
  sockets_.CutAll();
}

std::optional<TaskRun::Clock::time_point> TaskRun::CutAt() const {
  const std::lock_guard lock(mutex_);
  return cutAt_;
}

}  // namespace updown
