#include "platform/window.h"

#include <algorithm>
#include <condition_variable>
#include <map>
#include <thread>
#include <utility>

namespace updown {
namespace {

// Handlers may queue further messages for ever. After this many beyond those that were there, a
// Dispatch returns to its event loop, which has input and painting to serve.
constexpr std::size_t kFurtherMessages = 64;

}  // namespace

struct Answer {
  bool given = false;
  MessageResult result = 0;
};

struct QueuedMessage {
  WindowHandle window;
  WindowMessage message;
  std::shared_ptr<Answer> answer;  // null for a posted message
};

namespace {

// Which queue a window belongs to.
struct Registry {
  std::mutex mutex;
  std::uint64_t lastHandle = 0;
  std::map<WindowHandle, std::shared_ptr<MessageQueue::State>> windows;
};

Registry& AllWindows() {
  static auto& registry = *new Registry;  // never destroyed, as threads may outlive the statics
  return registry;
}

std::shared_ptr<MessageQueue::State> QueueOf(WindowHandle window) {
  Registry& registry = AllWindows();
  const std::lock_guard lock(registry.mutex);
  const auto found = registry.windows.find(window);
  return found == registry.windows.end() ? nullptr : found->second;
}

}  // namespace

using Procedures = std::map<WindowHandle, std::shared_ptr<const WindowProcedure>>;

// The registry's lock and this one are never held together.
struct MessageQueue::State {
  explicit State(std::function<void()> wakeUp) : wake(std::move(wakeUp)) {}

  const std::thread::id owner = std::this_thread::get_id();
  std::function<void()> wake;  // called while wakesRunning counts it

  std::mutex mutex;  // guards all that follows
  std::condition_variable changed;
  Procedures procedures;
  std::deque<QueuedMessage> messages;
  bool wakePending = false;  // a wake-up is under way that no Dispatch has answered yet
  int wakesRunning = 0;
  bool closed = false;

  std::shared_ptr<const WindowProcedure> ProcedureOf(WindowHandle window);
  bool Enqueue(QueuedMessage message);
  void Wake(std::unique_lock<std::mutex>& lock);
  bool DispatchOne(std::unique_lock<std::mutex>& lock);
  void Forget(WindowHandle window);
  MessageResult Await(const std::shared_ptr<Answer>& answer);
};

std::shared_ptr<const WindowProcedure> MessageQueue::State::ProcedureOf(WindowHandle window) {
  const std::lock_guard lock(mutex);
  const auto found = procedures.find(window);
  return found == procedures.end() ? nullptr : found->second;
}

bool MessageQueue::State::Enqueue(QueuedMessage message) {
  std::unique_lock lock(mutex);
  if (closed || procedures.count(message.window) == 0) {
    return false;
  }
  messages.push_back(std::move(message));
  Wake(lock);
  return true;
}

// Leaves the lock for the call, and takes it again.
void MessageQueue::State::Wake(std::unique_lock<std::mutex>& lock) {
  if (wakePending || closed) {
    return;
  }
  wakePending = true;
  ++wakesRunning;
  lock.unlock();
  wake();
  lock.lock();
  --wakesRunning;
  changed.notify_all();
}

// False when there is nothing to do. The handler runs without the lock.
bool MessageQueue::State::DispatchOne(std::unique_lock<std::mutex>& lock) {
  if (messages.empty()) {
    return false;
  }
  const QueuedMessage taken = std::move(messages.front());
  messages.pop_front();
  const auto procedure = procedures.at(taken.window);
  if (!messages.empty()) {
    Wake(lock);  // an event loop inside the handler has to learn of the rest
  }
  lock.unlock();
  const MessageResult result = (*procedure)(taken.message);
  lock.lock();
  if (taken.answer) {
    *taken.answer = {true, result};
    changed.notify_all();
  }
  return true;
}

// Drops what is queued for the window, or for all windows if it names none.
void MessageQueue::State::Forget(WindowHandle window) {
  const auto concerns = [&](const QueuedMessage& queued) {
    return window == WindowHandle{} || queued.window == window;
  };
  for (const QueuedMessage& queued : messages) {
    if (queued.answer && concerns(queued)) {
      queued.answer->given = true;
    }
  }
  messages.erase(std::remove_if(messages.begin(), messages.end(), concerns), messages.end());
  changed.notify_all();
}

// A message that is being handled is awaited even if its window goes meanwhile: the handler may
// still use what the parameters point to.
MessageResult MessageQueue::State::Await(const std::shared_ptr<Answer>& answer) {
  std::unique_lock lock(mutex);
  changed.wait(lock, [&] { return answer->given; });
  return answer->result;
}

MessageQueue::MessageQueue(std::function<void()> wake)
    : state_(std::make_shared<State>(std::move(wake))) {}

MessageQueue::~MessageQueue() {
  {
    Registry& registry = AllWindows();
    const std::lock_guard lock(registry.mutex);
    for (auto window = registry.windows.begin(); window != registry.windows.end();) {
      window = window->second == state_ ? registry.windows.erase(window) : std::next(window);
    }
  }
  Procedures procedures;  // freed last, without the lock
  std::unique_lock lock(state_->mutex);
  state_->closed = true;
  procedures.swap(state_->procedures);
  state_->Forget({});
  state_->changed.wait(lock, [&] { return state_->wakesRunning == 0; });
}

WindowHandle MessageQueue::Register(WindowProcedure procedure) {
  Registry& registry = AllWindows();
  WindowHandle window;
  {
    const std::lock_guard lock(registry.mutex);
    window.value = ++registry.lastHandle;
  }
  {
    const std::lock_guard lock(state_->mutex);
    state_->procedures[window] = std::make_shared<const WindowProcedure>(std::move(procedure));
  }
  const std::lock_guard lock(registry.mutex);
  registry.windows[window] = state_;
  return window;
}

void MessageQueue::Unregister(WindowHandle window) {
  {
    Registry& registry = AllWindows();
    const std::lock_guard lock(registry.mutex);
    const auto found = registry.windows.find(window);
    if (found == registry.windows.end() || found->second != state_) {
      return;
    }
    registry.windows.erase(found);
  }
  Procedures::node_type procedure;  // freed last, without the lock
  const std::lock_guard lock(state_->mutex);
  procedure = state_->procedures.extract(window);
  state_->Forget(window);
}

void MessageQueue::Dispatch() {
  const std::shared_ptr<State> state = state_;  // a handler may destroy the queue
  std::unique_lock lock(state->mutex);
  state->wakePending = false;
  std::size_t left = state->messages.size() + kFurtherMessages;
  while (left > 0 && state->DispatchOne(lock)) {
    --left;
  }
  if (!state->messages.empty()) {
    state->Wake(lock);
  }
}

bool IsWindow(WindowHandle window) { return QueueOf(window) != nullptr; }

MessageResult SendWindowMessage(WindowHandle window, std::uint32_t number, WideParam wParam,
                                LongParam lParam) {
  const std::shared_ptr<MessageQueue::State> queue = QueueOf(window);
  if (!queue) {
    return 0;
  }
  const WindowMessage message{number, wParam, lParam};
  if (queue->owner == std::this_thread::get_id()) {
    const auto procedure = queue->ProcedureOf(window);
    return procedure ? (*procedure)(message) : 0;
  }
  const auto answer = std::make_shared<Answer>();
  return queue->Enqueue({window, message, answer}) ? queue->Await(answer) : 0;
}

bool PostWindowMessage(WindowHandle window, std::uint32_t number, WideParam wParam,
                       LongParam lParam) {
  const std::shared_ptr<MessageQueue::State> queue = QueueOf(window);
  return queue && queue->Enqueue({window, {number, wParam, lParam}, nullptr});
}

}  // namespace updown
