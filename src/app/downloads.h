#pragma once

#include <QObject>
#include <QString>
#include <QWidget>
#include <memory>
#include <optional>
#include <string>

#include "app/window_requests.h"
#include "engine/cache.h"
#include "engine/scheduler.h"
#include "engine/task_store.h"
#include "packages/package_downloads.h"
#include "platform/qt/main_thread.h"
#include "transfers/transfer_tasks.h"

namespace updown {

// The program's downloads: makes tasks of what panes and status window ask for. Main thread only.
class Downloads : public QObject, public PackageDownloads, public TransferTasks {
  Q_OBJECT

 public:
  // `owner` stands behind the boxes. What it is given outlives it, the context's threads may
  // outlive it.
  Downloads(const LaunchState& launch, const PackageCache& cache, WindowRequests& requests,
            MainThread& mainThread, std::shared_ptr<SchedulerContext> context, QWidget& owner);

  TaskStore& Tasks() { return tasks_; }

  // True if the record has brought a header that is now in the cache.
  bool TakeIntoCache(const TransferRecord& record);

  void RestoreTasks() override;
  bool IsQueued(const std::u16string& path) override;
  void FetchHeader(const std::string& name, const std::string& path) override;
  bool StreamLimitReached() const override { return tasks_.StreamLimitReached(); }
  bool IsDuplicate(const std::u16string& path) override;
  bool SaveFile(const std::string& name, const std::string& path) override;

  TaskPointer Find(TaskId task) const override { return tasks_.Find(task); }
  void RemoveTask(TaskId task) override;
  void TasksChanged() override { Q_EMIT SaveNeeded(); }
  std::optional<std::string> RenewSession() override;
  void WakeScheduler() override;

 Q_SIGNALS:
  void TaskAdded(TaskId task);     // by the user, a moment ago
  void TaskRestored(TaskId task);  // from the stored list; no worker knows it yet
  void SaveNeeded();               // the stored list is out of date

 private:
  TaskDraft DraftOf(const std::string& name, const std::string& path) const;
  std::optional<std::string> AskForTarget(const std::string& displayName);

  const LaunchState& launch_;
  const PackageCache& cache_;
  WindowRequests& requests_;
  MainThread& mainThread_;
  const std::shared_ptr<SchedulerContext> context_;
  QWidget& owner_;
  TaskStore tasks_;
  QString saveFolder_;  // where the last target was chosen
};

}  // namespace updown
