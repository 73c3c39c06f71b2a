#include "platform/posted_calls.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

namespace updown {
namespace {

// Calls may post further ones for ever. After this many beyond those that were there, a Run returns
// to its event loop, which has input and painting to serve.
constexpr std::size_t kFurtherCalls = 64;

}  // namespace

struct PostedCalls::State {
  explicit State(std::function<void()> wakeUp) : wake(std::move(wakeUp)) {}

  const std::function<void()> wake;  // called while wakesRunning counts it

  std::mutex mutex;  // guards all that follows
  std::condition_variable wakesEnded;
  std::deque<Call> calls;
  bool wakePending = false;  // a wake-up is under way that no Run has answered yet
  int wakesRunning = 0;
  bool closed = false;

  void Wake(std::unique_lock<std::mutex>& lock);
  bool RunOne(std::unique_lock<std::mutex>& lock);
};

// Leaves the lock for the call, and takes it again. A call that throws has woken nobody: the next
// one tries again.
void PostedCalls::State::Wake(std::unique_lock<std::mutex>& lock) {
  if (wakePending || closed) {
    return;
  }
  wakePending = true;
  ++wakesRunning;
  lock.unlock();
  bool thrown = false;
  try {
    wake();
  } catch (...) {
    thrown = true;
  }
  lock.lock();
  wakePending = wakePending && !thrown;
  --wakesRunning;
  wakesEnded.notify_all();
}

// False when there is nothing to do. The call runs, and is destroyed, without the lock.
bool PostedCalls::State::RunOne(std::unique_lock<std::mutex>& lock) {
  if (calls.empty()) {
    return false;
  }
  Call taken = std::move(calls.front());
  calls.pop_front();
  if (!calls.empty()) {
    Wake(lock);  // an event loop inside the call has to learn of the rest
  }
  lock.unlock();
  taken();
  taken = nullptr;
  lock.lock();
  return true;
}

PostedCalls::PostedCalls(std::function<void()> wake)
    : state_(std::make_shared<State>(std::move(wake))) {}

PostedCalls::~PostedCalls() { Close(); }

bool PostedCalls::Post(Call call) {
  const std::shared_ptr<State> state = state_;
  std::unique_lock lock(state->mutex);
  if (state->closed) {
    return false;
  }
  state->calls.push_back(std::move(call));
  state->Wake(lock);
  return true;
}

void PostedCalls::Run() {
  const std::shared_ptr<State> state = state_;  // a call may destroy the queue
  std::unique_lock lock(state->mutex);
  state->wakePending = false;
  std::size_t left = state->calls.size() + kFurtherCalls;
  while (left > 0 && state->RunOne(lock)) {
    --left;
  }
  if (!state->calls.empty()) {
    state->Wake(lock);
  }
}

void PostedCalls::Close() {
  std::deque<Call> dropped;  // destroyed without the lock
  std::unique_lock lock(state_->mutex);
  state_->closed = true;
  dropped.swap(state_->calls);
  state_->wakesEnded.wait(lock, [this] { return state_->wakesRunning == 0; });
  lock.unlock();
}

}  // namespace updown
