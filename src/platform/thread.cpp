#include "platform/thread.h"

#include <system_error>
#include <utility>

namespace updown {

std::unique_ptr<Thread> Thread::Start(std::function<void()> body) {
  std::unique_ptr<Thread> thread(new Thread);
  thread->ended_ = std::make_shared<Event>();
  try {
    thread->thread_ = std::thread([ended = thread->ended_, body = std::move(body)]() mutable {
      body();
      body = nullptr;  // what it holds is released before anybody is told
      ended->Set();
    });
  } catch (const std::system_error&) {
    return nullptr;
  }
  return thread;
}

Thread::~Thread() {
  if (!thread_.joinable()) {
    return;
  }
  if (ended_->IsSet()) {
    thread_.join();
  } else {
    thread_.detach();
  }
}

}  // namespace updown
