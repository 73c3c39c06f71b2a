#include "engine/task_list_saver.h"

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <optional>
#include <utility>

namespace updown {

struct TaskListSaver::State {
  const Write write;
  const std::chrono::milliseconds retry;

  std::mutex mutex;  // guards all below
  std::condition_variable changed;
  Report report;                                    // empty once Finish has begun
  std::optional<std::vector<StoredRecord>> newest;  // not yet stored, nor being written
  bool ending = false;
  bool failing = false;
};

TaskListSaver::TaskListSaver(Write write, Report report, std::chrono::milliseconds retry)
    : state_(new State{std::move(write), retry, {}, {}, std::move(report), {}, false, false}) {}

TaskListSaver::~TaskListSaver() { Finish(std::chrono::steady_clock::now()); }

void TaskListSaver::Save(std::vector<StoredRecord> snapshot) {
  const std::lock_guard lock(state_->mutex);
  state_->newest = std::move(snapshot);
  state_->changed.notify_one();
  StartThread();
}

// Under the mutex.
void TaskListSaver::StartThread() {
  if (!thread_) {
    thread_ = Thread::Start([state = state_] { Run(*state); });
    if (!thread_) {
      Tell(*state_, EAGAIN);
    }
  }
}

// Under the mutex.
void TaskListSaver::Tell(State& state, int error) {
  const bool fails = error != 0;
  if (std::exchange(state.failing, fails) != fails && state.report) {
    state.report(error);
  }
}

void TaskListSaver::Run(State& state) {
  std::unique_lock lock(state.mutex);
  for (;;) {
    state.changed.wait(lock, [&state] { return state.newest || state.ending; });
    if (!state.newest) {
      return;
    }
    const bool last = state.ending;
    std::vector<StoredRecord> snapshot = std::move(*state.newest);
    state.newest.reset();
    lock.unlock();
    int error = 0;
    try {
      error = state.write(snapshot);
    } catch (const std::exception&) {
      error = ENOMEM;  // tried again like any other failure
    }
    lock.lock();
    Tell(state, error);
    if (error == 0) {
      continue;
    }
    if (!state.newest) {
      state.newest = std::move(snapshot);
    }
    if (last) {
      return;
    }
    state.changed.wait_for(lock, state.retry, [&state] { return state.ending; });
  }
}

bool TaskListSaver::Finish(std::chrono::steady_clock::time_point deadline) {
  {
    const std::lock_guard lock(state_->mutex);
    state_->ending = true;
    state_->report = nullptr;
    state_->changed.notify_one();
    if (state_->newest) {
      StartThread();  // the system may have refused it before
    }
  }
  if (thread_) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    if (!thread_->Ended().WaitFor(std::max(left, std::chrono::milliseconds::zero()))) {
      return false;
    }
  }
  const std::lock_guard lock(state_->mutex);
  return !state_->newest;
}

}  // namespace updown
