#include "app/task_list_saving.h"

#include <QElapsedTimer>
#include <QTimerEvent>
#include <algorithm>
#include <chrono>

#include "app/task_list_path.h"
#include "localdata/tasklist.h"

namespace updown {
namespace {

constexpr std::chrono::milliseconds kSavePause{200};
constexpr int kSavePauseFactor = 9;  // saves take at most a tenth of the main thread's time

}  // namespace

TaskListSaving::TaskListSaving(const TaskStore& tasks, const LaunchState& launch)
    : tasks_(tasks), launch_(launch) {}

void TaskListSaving::Request() {
  if (throttle_.Request()) {
    SaveAndPause();
  }
}

void TaskListSaving::SaveAtEnd() {
  pause_.stop();
  Save();
}

void TaskListSaving::timerEvent(QTimerEvent* event) {
  if (event->timerId() != pause_.timerId()) {
    QObject::timerEvent(event);
  } else if (throttle_.PauseOver()) {
    SaveAndPause();
  } else {
    pause_.stop();
  }
}

// A list of many thousand tasks is saved less often, or the window would do nothing else while they
// run.
void TaskListSaving::SaveAndPause() {
  QElapsedTimer saving;
  saving.start();
  Save();
  const std::chrono::milliseconds taken(saving.elapsed());
  pause_.start(static_cast<int>(std::max(kSavePause, kSavePauseFactor * taken).count()), this);
}

void TaskListSaving::Save() const {
  if (const std::optional<std::string> path = TaskListPath(launch_.identityHash)) {
    SaveTaskList(tasks_.Records(), *path);
  }
}

}  // namespace updown
