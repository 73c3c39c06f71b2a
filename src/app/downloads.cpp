#include "app/downloads.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QStandardPaths>
#include <utility>

#include "localdata/file_names.h"
#include "platform/qt/text.h"
#include "resources/qt/texts.h"
#include "service/result_codes.h"
#include "widgets/message_boxes.h"

namespace updown {
namespace {

QString FirstSaveFolder() {
  const QString downloads = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
  return QFileInfo(downloads).isDir() ? downloads : QDir::homePath();
}

// The string names the pattern as users of other systems know it; here it would leave out every
// file without a dot.
QString AllFilesFilter() { return Text(StringId::FileFilterAll).replace(u"*.*"_qs, u"*"_qs); }

}  // namespace

Downloads::Downloads(const LaunchState& launch, const PackageCache& cache, WindowRequests& requests,
                     MainThread& mainThread, std::shared_ptr<SchedulerContext> context,
                     QWidget& owner)
    : launch_(launch),
      cache_(cache),
      requests_(requests),
      mainThread_(mainThread),
      context_(std::move(context)),
      owner_(owner),
      tasks_(context_->queue, launch) {}

TaskDraft Downloads::DraftOf(const std::string& name, const std::string& path) const {
  return {name, path, requests_.Sessid(), launch_.serverName, launch_.serverPort};
}

std::optional<std::string> Downloads::AskForTarget(const std::string& displayName) {
  QFileDialog dialog(&owner_, Text(StringId::Save),
                     saveFolder_.isEmpty() ? FirstSaveFolder() : saveFolder_, AllFilesFilter());
  dialog.setObjectName(u"saveDialog"_qs);
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setFileMode(QFileDialog::AnyFile);
  dialog.selectFile(IsSafeName(displayName) ? FromUtf8(displayName) : QString());
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
    return std::nullopt;
  }
  const QString path = dialog.selectedFiles().constFirst();
  saveFolder_ = QFileInfo(path).absolutePath();
  return ToUtf8(path);
}

bool Downloads::SaveFile(const std::string& name, const std::string& path) {
  const std::optional<std::string> target = AskForTarget(name);
  if (!target) {
    return false;
  }
  const TaskPointer task = tasks_.AddDownload(DraftOf(name, path), *target, true);
  if (!task) {
    // A path that the task list cannot hold.
    requests_.ReportResult(result::kFileOpen);
    return false;
  }
  context_->schedulerWake.Set();
  // Not only when a worker ends: what the user asked for outlives a crash from here on.
  Q_EMIT SaveNeeded();
  Q_EMIT TaskAdded(task->id);
  return true;
}

void Downloads::FetchHeader(const std::string& name, const std::string& path) {
  const std::string target = cache_.BeginFetch(name);
  if (!target.empty() && tasks_.AddDownload(DraftOf(name, path), target, false)) {
    context_->schedulerWake.Set();
  }
}

bool Downloads::TakeIntoCache(const TransferRecord& record) {
  return record.keepAcrossRestart == 0 && record.state == TransferState::Finished &&
         cache_.EndFetch(record.LocalPath());
}

void Downloads::RestoreTasks() {
  if (tasks_.RestoreTasks(requests_.Sessid(), [this](TaskId task) { Q_EMIT TaskRestored(task); })) {
    context_->schedulerWake.Set();
  }
}

void Downloads::RemoveTask(TaskId task) {
  tasks_.RemoveTask(task);
  Q_EMIT SaveNeeded();
}

bool Downloads::IsQueued(const std::u16string& path) {
  return tasks_.IsDuplicate(path, TaskStore::DuplicateScope::QueuedOnly);
}

bool Downloads::IsDuplicate(const std::u16string& path) {
  if (!tasks_.IsDuplicate(path, TaskStore::DuplicateScope::EveryState)) {
    return false;
  }
  ShowNotice(&owner_, StringId::DuplicateTask);
  return true;
}

std::optional<std::string> Downloads::RenewSession() {
  return requests_.ReopenSession() ? std::optional(requests_.Sessid()) : std::nullopt;
}

void Downloads::WakeScheduler() {
  mainThread_.Post([context = context_] { context->schedulerWake.Set(); });
}

}  // namespace updown
