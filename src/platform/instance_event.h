#pragma once

#include <memory>
#include <string>

namespace updown {

// A named, machine-wide signal with one holder: the first process that creates it. It is an
// abstract socket address, so the kernel frees it with its holder, even after kill -9, and any user
// may raise it.
class InstanceEvent {
 public:
  enum class Outcome { Created, AlreadyExists, Failed };
  struct Result {
    Outcome outcome;
    std::unique_ptr<InstanceEvent> event;  // set for Created only
  };

  // AlreadyExists: another process holds `name`, and it has been signalled.
  static Result CreateOrSignal(const std::string& name);

  ~InstanceEvent();
  InstanceEvent(const InstanceEvent&) = delete;
  InstanceEvent& operator=(const InstanceEvent&) = delete;

  // Readable while a signal waits to be taken: to be watched, not read. Ours.
  int Descriptor() const { return fd_; }

  // True once after any number of signals since the last call. Does not wait.
  bool TestAndReset();

 private:
  explicit InstanceEvent(int fd) : fd_(fd) {}
  int fd_;
};

}  // namespace updown
