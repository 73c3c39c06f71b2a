#pragma once

#include <QBasicTimer>
#include <QObject>

#include "app/save_throttle.h"
#include "engine/task_store.h"

namespace updown {

// Keeps the stored task list in step with the tasks. Main thread only.
class TaskListSaving : public QObject {
  Q_OBJECT

 public:
  // Both outlive it.
  TaskListSaving(const TaskStore& tasks, const LaunchState& launch);

  // The stored list is out of date. A burst of requests leads to few saves.
  void Request();
  // At the program's end: what has been asked for so far is forgotten.
  void SaveAtEnd();

 protected:
  void timerEvent(QTimerEvent* event) override;

 private:
  void SaveAndPause();
  void Save() const;

  const TaskStore& tasks_;
  const LaunchState& launch_;
  SaveThrottle throttle_;
  QBasicTimer pause_;
};

}  // namespace updown
