#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "localdata/transfer_record.h"
#include "platform/thread.h"

namespace updown {

inline constexpr std::chrono::milliseconds kSaveRetry{5000};

// Writes the task list on a thread of its own, so that nobody waits for a disk. Of the snapshots
// that come while one is being written only the newest is kept. A save that fails is repeated, with
// the newest snapshot, until one comes through. Sleeps while there is nothing to do.
//
// One owner, whose thread makes all calls.
class TaskListSaver {
 public:
  // Stores the records and returns 0 or an errno. On the saver's thread.
  using Write = std::function<int(std::span<const StoredRecord>)>;
  // What changed: the errno when saves begin to fail, 0 when they come through again. On any
  // thread; must not call the saver. Not called any more once Finish has begun.
  using Report = std::function<void(int error)>;

  TaskListSaver(Write write, Report report, std::chrono::milliseconds retry = kSaveRetry);
  ~TaskListSaver();  // as Finish, without waiting
  TaskListSaver(const TaskListSaver&) = delete;
  TaskListSaver& operator=(const TaskListSaver&) = delete;

  void Save(std::vector<StoredRecord> snapshot);

  // No snapshot follows. Waits for the last one, tried once more if it has failed so far, at most
  // until `deadline`. True if it is stored. A write that hangs is left to the process's end.
  bool Finish(std::chrono::steady_clock::time_point deadline);

 private:
  struct State;
  void StartThread();
  static void Run(State& state);
  static void Tell(State& state, int error);

  std::shared_ptr<State> state_;
  std::unique_ptr<Thread> thread_;
};

}  // namespace updown
