#pragma once

#include <QObject>
#include <QTimer>
#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "engine/task_list_saver.h"

namespace updown {

// Decides when the task list is saved: soon after a change, a burst of changes once; and every five
// seconds while blocks arrive. Nothing ticks while nothing happens. Main thread.
class TaskListKeeper : public QObject {
  Q_OBJECT

 public:
  // What is to be stored, as it stands at the call.
  using Snapshot = std::function<std::vector<StoredRecord>()>;

  // Without a path (no folder for the program's data) each save fails.
  TaskListKeeper(const std::optional<std::string>& path, Snapshot snapshot);

  void TasksChanged();
  void BlockDone();

  // The end, in two steps, so that the engine stops while the disk works: the last snapshot, then
  // the wait for it, at most a second after the first step.
  void BeginEnd();
  void WaitForEnd();

 Q_SIGNALS:
  // Once when saves begin to fail (an errno), once when they come through again (0).
  void SavingChanged(int error);

 private:
  void Save();

  Snapshot snapshot_;
  QTimer pause_;  // behind a save
  QTimer progress_;
  bool changedInPause_ = false;
  std::chrono::steady_clock::time_point deadline_;
  TaskListSaver saver_;  // last: its thread reports to this object
};

}  // namespace updown
