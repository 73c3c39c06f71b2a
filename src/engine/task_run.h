#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <stop_token>

#include "wire/sockets.h"

namespace updown {

// One run of a task on its worker, or on the workers of a folder, and how others bring it to its
// end. Workers call what stands first, any thread the rest.
class TaskRun {
 public:
  using Clock = std::chrono::steady_clock;

  // How long a block that is under way may take to its end once the run is to end soon.
  static constexpr std::chrono::seconds kBlockInHand{5};

  // `workers` (may be null) outlives the run and cuts it along with others.
  explicit TaskRun(SocketGroup* workers) : sockets_(workers) {}

  // What the run's connections belong to.
  SocketGroup* Sockets() { return &sockets_; }
  std::stop_token StopToken() const { return stop_.get_token(); }
  // Waits; false as soon as the run is to end.
  bool WaitUntil(Clock::time_point time);
  // A block is under way from the one to the other, or several are. False if the run is to end
  // instead, and then there is no block to end.
  bool BeginBlock();
  void EndBlock();
  // A block has come.
  void NoteBlock() { moved_ = true; }
  bool HasMoved() const { return moved_; }

  bool Stopping() const { return stop_.stop_requested(); }
  // Ends all waits. A block in hand has until CutAt(), everything else is cut at once.
  void EndSoon();
  // Ends all waits and connections.
  void Cut();
  // When the scheduler is to cut it; nothing as long as no block is waited for.
  std::optional<Clock::time_point> CutAt() const;

 private:
  std::stop_source stop_;
  std::atomic<bool> moved_{false};
  SocketGroup sockets_;
  mutable std::mutex mutex_;  // guards what follows
  std::condition_variable_any stopped_;
  int blocks_ = 0;
  std::optional<Clock::time_point> cutAt_;
};

}  // namespace updown
