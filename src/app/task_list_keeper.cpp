#include "app/task_list_keeper.h"

#include <cerrno>
#include <span>
#include <utility>

#include "localdata/tasklist.h"

namespace updown {
namespace {

constexpr std::chrono::milliseconds kPause{200};
constexpr std::chrono::seconds kProgressSave{5};
constexpr std::chrono::seconds kEndLimit{1};

TaskListSaver::Write WriteTo(const std::optional<std::string>& path) {
  return [path](std::span<const StoredRecord> records) {
    return path ? SaveTaskList(records, *path) : ENOENT;
  };
}

}  // namespace

TaskListKeeper::TaskListKeeper(const std::optional<std::string>& path, Snapshot snapshot)
    : snapshot_(std::move(snapshot)), saver_(WriteTo(path), [this](int error) {
        Q_EMIT SavingChanged(error);  // on the saver's thread; whoever listens hears it queued
      }) {
  pause_.setSingleShot(true);
  pause_.setInterval(kPause);
  progress_.setSingleShot(true);
  progress_.setInterval(kProgressSave);
  connect(&pause_, &QTimer::timeout, this, [this] {
    if (changedInPause_) {
      Save();
    }
  });
  connect(&progress_, &QTimer::timeout, this, &TaskListKeeper::TasksChanged);
}

void TaskListKeeper::TasksChanged() {
  if (pause_.isActive()) {
    changedInPause_ = true;
  } else {
    Save();
  }
}

void TaskListKeeper::BlockDone() {
  if (!progress_.isActive()) {
    progress_.start();
  }
}

void TaskListKeeper::Save() {
  changedInPause_ = false;
  progress_.stop();
  pause_.start();
  saver_.Save(snapshot_());
}

void TaskListKeeper::BeginEnd() {
  deadline_ = std::chrono::steady_clock::now() + kEndLimit;
  Save();
  pause_.stop();
}

void TaskListKeeper::WaitForEnd() { saver_.Finish(deadline_); }

}  // namespace updown
