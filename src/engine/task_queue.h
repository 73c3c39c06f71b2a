#pragma once

#include <deque>
#include <list>
#include <map>
#include <mutex>
#include <unordered_map>

#include "engine/transfer_task.h"
#include "platform/event.h"

namespace updown {

// The queue as window, scheduler and workers share it, new tasks last. All calls take queueLock
// themselves; choosing, adding and removing cost the same however many tasks there are.
class TaskQueue {
 public:
  // A task without an id gets one. Its numbers order the tasks.
  void Append(TaskPointer task);
  TaskPointer Remove(TaskId id);
  TaskPointer Find(TaskId id) const;
  bool Empty() const;

  // What the user asked for goes before the header files that the program fetches for itself, each
  // in order: the first task whose record is Queued and that has no worker. It is given once, and
  // again behind MakeReady or PutBack. Headers are left out unless `headersToo`.
  TaskPointer NextRunnableTask(bool headersToo = true);
  // Whether a task of the user's is runnable; it stays so.
  bool UserTaskWaits();
  // The task may have been Queued again.
  void MakeReady(TaskId id);
  // What NextRunnableTask gave has no worker for lack of a thread, which is no news.
  void PutBack(const TaskPointer& task);

  // Signalled when there is something to look at: a task of the user's, headers where there were
  // none, a run to be ended. The scheduler resets it.
  Event& News() { return news_; }

  // Tasks without a worker, whose run has to be ended elsewhere than on the calling thread: that
  // may remove files.
  void AddEnding(TaskPointer task);
  bool HasEndings() const;
  // Ends the runs that wait for it, and those that come meanwhile. On a thread of its own.
  void EndRuns();

  // Queued becomes Stopped for each task that runs, children included.
  void StopRunningTasks();

  // Calls `visit` for each task in order, under queueLock: it must not call back into the queue.
  // Those that are kept across restarts are few, the others may be tens of thousands.
  template <typename Visit>
  void ForEachKept(Visit visit) const {
    const std::lock_guard lock(queueLock_);
    for (const auto& [id, task] : kept_) {
      visit(*task);
    }
  }
  template <typename Visit>
  void ForEach(Visit visit) const {
    const std::lock_guard lock(queueLock_);
    for (const TaskPointer& task : tasks_) {
      visit(*task);
    }
  }

  // Frees all tasks that no worker holds.
  void Clear();

 private:
  using Tasks = std::list<TaskPointer>;
  // By their numbers. May hold tasks that have been stopped since: they go when they are met.
  using Ready = std::map<TaskId, TaskPointer>;

  static Ready::iterator FirstOf(Ready& ready);
  static TaskPointer TakeFirst(Ready& ready);
  Ready& ReadyOf(const TransferTask& task);
  TaskPointer TakeEnding();

  mutable std::mutex queueLock_;
  Tasks tasks_;
  std::unordered_map<TaskId, Tasks::iterator> places_;
  std::map<TaskId, TaskPointer> kept_;
  Ready readyForUser_;
  Ready readyHeaders_;
  std::deque<TaskPointer> endings_;
  Event news_;
};

}  // namespace updown
