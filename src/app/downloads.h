#pragma once

#include <QFileDialog>
#include <QObject>
#include <QString>
#include <QWidget>
#include <memory>
#include <optional>
#include <string>

#include "engine/cache.h"
#include "engine/scheduler.h"
#include "engine/task_store.h"
#include "packages/header_fetches.h"
#include "packages/package_downloads.h"
#include "transfers/transfer_tasks.h"

namespace updown {

// The program's downloads: makes tasks of what panes and status window ask for. Main thread only.
class Downloads : public QObject,
                  public PackageDownloads,
                  public HeaderFetches,
                  public TransferTasks {
  Q_OBJECT

 public:
  // `owner` stands behind the boxes. What it is given outlives it, the context's threads may
  // outlive it.
  Downloads(const LaunchState& launch, const PackageCache& cache,
            std::shared_ptr<SchedulerContext> context, QWidget& owner);

  TaskStore& Tasks() { return tasks_; }

  // Puts the stored tasks into the queue while that is empty.
  void RestoreTasks();

  // For a task that has ended: the header file that it was to bring, and whether the cache has that
  // now; nothing if it was the user's. The task of a header goes.
  struct EndedHeader {
    std::string file;
    bool arrived = false;
  };
  std::optional<EndedHeader> TakeHeader(const TransferTask& task);

  // What is still to be fetched from a renamed package is fetched under its new name.
  void FollowRename(const std::string& package, const std::string& newName);

  bool FetchHeader(const std::string& package, const std::string& file) override;
  bool StreamLimitReached() const override { return tasks_.StreamLimitReached(); }
  bool IsDuplicate(const std::string& path) const override;
  bool SaveFile(const std::string& name, const std::string& path) override;
  bool SavePackage(const std::string& package) override;

  TaskPointer Find(TaskId task) const override { return tasks_.Find(task); }
  bool IsTargetInUse(const std::string& localPath) const override {
    return tasks_.IsTargetInUse(localPath);
  }
  void PauseTask(TaskId task) override;
  bool ResumeTask(TaskId task) override;
  bool RedoTask(TaskId task) override;
  void MoveTask(TaskId task, const std::string& localPath) override;
  void DeleteTask(TaskId task) override;

 Q_SIGNALS:
  void TaskAdded(TaskId task);     // by the user, a moment ago
  void TaskRestored(TaskId task);  // from the stored list; no worker knows it yet
  void TaskMoved(TaskId task);     // its service path is another one
  void SaveNeeded();               // the stored list is out of date

 private:
  TaskDraft DraftOf(const std::string& name, const std::string& path) const;
  bool TellUnlessDone(bool done);
  // The list is stored: what the user has said outlives a crash.
  void TasksChanged();
  std::optional<std::string> AskForTarget(const std::string& displayName);
  std::optional<std::string> AskForFolder();
  std::optional<std::string> RunDialog(QFileDialog& dialog, const QString& name);
  std::string NewFolderIn(const std::string& folder, const std::string& package) const;
  bool TakeAdded(const TaskPointer& task);

  const LaunchState& launch_;
  const PackageCache& cache_;
  const std::shared_ptr<SchedulerContext> context_;
  QWidget& owner_;
  TaskStore tasks_;
  QString saveFolder_;     // where the last target was chosen
  std::string askedPath_;  // on the service, of what a dialog asks for; follows renames
};

}  // namespace updown
