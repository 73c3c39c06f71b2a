#pragma once

#include <functional>
#include <memory>

namespace updown {

// A queue of calls towards one thread, which runs them in the order of their posting. This half
// knows no toolkit: platform/qt ties it to Qt's event loop.
class PostedCalls {
 public:
  using Call = std::function<void()>;

  // `wake` is called on any thread, without a lock held, when there is something to run. It must
  // not run it itself, and is not called any more once Close has returned.
  explicit PostedCalls(std::function<void()> wake);
  ~PostedCalls();
  PostedCalls(const PostedCalls&) = delete;
  PostedCalls& operator=(const PostedCalls&) = delete;

  // Any thread. False, with the call destroyed unused, after Close.
  bool Post(Call call);

  // The rest is for the queue's own thread.

  // Runs what is there. A call may run the queue again (a message box does): the inner one goes on
  // where the outer one stands. A burst does not hold it for ever: it returns at some point and
  // wakes again.
  void Run();

  // Nothing is accepted and no call begins from here on; those that wait are destroyed before it
  // returns. Safe within a call, and as often as one likes.
  void Close();

 private:
  struct State;  // shared with those who post
  const std::shared_ptr<State> state_;
};

}  // namespace updown
