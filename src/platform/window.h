#pragma once

#include <compare>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace updown {

// Numbered messages between windows and towards windows from other threads. This half knows no
// toolkit: platform/qt ties a queue to Qt's event loop, a test pumps one itself.

using WideParam = std::uintptr_t;
using LongParam = std::intptr_t;
using MessageResult = std::intptr_t;

// Name of a window. Never reused in a process, so that a handle whose window is gone stays
// recognisable. The default value names no window. Copy freely, any thread.
struct WindowHandle {
  std::uint64_t value = 0;
  auto operator<=>(const WindowHandle&) const = default;
};

struct WindowMessage {
  std::uint32_t number = 0;
  WideParam wParam = 0;
  LongParam lParam = 0;
};

using WindowProcedure = std::function<MessageResult(const WindowMessage&)>;

// The queue of one thread that has windows. Made, dispatched and destroyed on that thread.
class MessageQueue {
 public:
  // `wake` is called on any thread, without a lock held, when there is something to dispatch. It
  // is not called any more once the destructor has returned. It must not dispatch itself.
  explicit MessageQueue(std::function<void()> wake);
  ~MessageQueue();  // its windows are gone from then on; senders that still wait get 0
  MessageQueue(const MessageQueue&) = delete;
  MessageQueue& operator=(const MessageQueue&) = delete;

  WindowHandle Register(WindowProcedure procedure);

  // Once this returns, no call of the window's procedure begins any more; queued messages for it
  // are dropped and their senders get 0. Safe from within the procedure itself.
  void Unregister(WindowHandle window);

  // Handles what is queued, one message at a time and in order. A procedure may dispatch again
  // (a message box does): the inner call goes on where the outer one stands. Handlers that queue
  // message after message do not hold it for ever: it returns at some point and wakes again.
  void Dispatch();

  struct State;  // shared with senders on other threads

 private:
  std::shared_ptr<State> state_;
};

// Any thread. A handle that names no window, or one that is gone: false and 0.
bool IsWindow(WindowHandle window);

// Waits for the result: a plain call on the window's own thread, else queued and awaited. The
// caller must hold no lock that the receiver may want.
MessageResult SendWindowMessage(WindowHandle window, std::uint32_t number, WideParam wParam,
                                LongParam lParam);

// Queues the message and returns at once; false if it was dropped.
bool PostWindowMessage(WindowHandle window, std::uint32_t number, WideParam wParam,
                       LongParam lParam);

// A reference that travels in a parameter of a sent message. The sender keeps what it points to.
template <typename T>
LongParam PointerParam(const T* pointer) {
  return reinterpret_cast<LongParam>(pointer);
}
template <typename T>
T* PointerFrom(LongParam param) {
  return reinterpret_cast<T*>(param);  // NOLINT(performance-no-int-to-ptr): it was one
}
template <typename T>
T* PointerFrom(WideParam param) {
  return reinterpret_cast<T*>(param);  // NOLINT(performance-no-int-to-ptr): it was one
}

}  // namespace updown
