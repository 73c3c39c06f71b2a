#pragma once

#include <memory>

#include "platform/posted_calls.h"

namespace updown {

// Runs calls on the main thread, through Qt's event loop, also inside the loop of a dialog. Made
// and destroyed on that thread, while there is an application object.
class MainThread {
 public:
  MainThread();
  ~MainThread();
  MainThread(const MainThread&) = delete;
  MainThread& operator=(const MainThread&) = delete;

  // Any thread; in order. False after the end.
  bool Post(PostedCalls::Call call) { return calls_->Post(std::move(call)); }

  // Main thread. No call begins from here on; those that wait are destroyed.
  void Close() { calls_->Close(); }

  // For threads that may outlive this object: what they post after its end is dropped.
  const std::shared_ptr<PostedCalls>& Calls() const { return calls_; }

 private:
  class Receiver;
  const std::unique_ptr<Receiver> receiver_;
  const std::shared_ptr<PostedCalls> calls_;
};

}  // namespace updown
