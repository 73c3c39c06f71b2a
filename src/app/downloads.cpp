#include "app/downloads.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QStandardPaths>
#include <utility>

#include "engine/result_texts.h"
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

Downloads::Downloads(const LaunchState& launch, const PackageCache& cache,
                     std::shared_ptr<SchedulerContext> context, QWidget& owner)
    : launch_(launch),
      cache_(cache),
      context_(std::move(context)),
      owner_(owner),
      tasks_(context_->queue, launch) {}

TaskDraft Downloads::DraftOf(const std::string& name, const std::string& path) const {
  return {name, path, launch_.serverName, launch_.serverPort};
}

std::optional<std::string> Downloads::AskForTarget(const std::string& displayName) {
  QFileDialog dialog(&owner_, Text(StringId::Save),
                     saveFolder_.isEmpty() ? FirstSaveFolder() : saveFolder_, AllFilesFilter());
  dialog.setObjectName(u"saveDialog"_qs);
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setFileMode(QFileDialog::AnyFile);
  dialog.selectFile(FromUtf8(displayName));
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
  if (tasks_.IsTargetInUse(*target)) {
    ShowNotice(&owner_, StringId::DuplicateTask);
    return true;
  }
  const TaskPointer task = tasks_.AddDownload(DraftOf(name, path), *target, true);
  if (!task) {
    // A path that the task list cannot hold.
    TellBox(&owner_, ToQString(ResultBoxText(result::kFileOpen)), u" "_qs, BoxIcon::Exclamation);
    return false;
  }
  TasksChanged();
  Q_EMIT TaskAdded(task->id);
  return true;
}

bool Downloads::FetchHeader(const std::string& package, const std::string& file) {
  const std::string target = cache_.BeginFetch(file);
  const std::string path = "/" + package + "/" + file;
  return !target.empty() && tasks_.AddDownload(DraftOf(file, path), target, false);
}

std::optional<Downloads::EndedHeader> Downloads::TakeHeader(const TransferTask& task) {
  if (!task.record || task.record->keepAcrossRestart != 0) {
    return std::nullopt;
  }
  const RecordPaths paths = task.record->Paths();
  const EndedHeader header{
      paths.remotePath.substr(paths.remotePath.rfind('/') + 1),
      task.record->state == TransferState::Finished && cache_.EndFetch(paths.localPath)};
  tasks_.RemoveTask(task.id);
  return header;
}

void Downloads::RestoreTasks() {
  if (tasks_.RestoreTasks([this](TaskId task) { Q_EMIT TaskRestored(task); })) {
    context_->schedulerWake.Set();
  }
}

void Downloads::FollowRename(const std::string& package, const std::string& newName) {
  const std::vector<TaskId> moved = tasks_.FollowRename("/" + package, "/" + newName);
  for (const TaskId task : moved) {
    Q_EMIT TaskMoved(task);
  }
  if (!moved.empty()) {
    Q_EMIT SaveNeeded();
  }
}

void Downloads::PauseTask(TaskId task) {
  tasks_.Pause(task);
  TasksChanged();
}

void Downloads::ResumeTask(TaskId task) {
  TellUnlessDone(tasks_.Resume(task));
  TasksChanged();
}

void Downloads::RedoTask(TaskId task) {
  TellUnlessDone(tasks_.Redo(task));
  TasksChanged();
}

void Downloads::DeleteTask(TaskId task) {
  tasks_.RemoveTask(task, TaskStore::LocalFiles::Remove);
  TasksChanged();
}

// Another task has the same target.
void Downloads::TellUnlessDone(bool done) {
  if (!done) {
    ShowNotice(&owner_, StringId::DuplicateTask);
  }
}

void Downloads::TasksChanged() { Q_EMIT SaveNeeded(); }

bool Downloads::IsDuplicate(const std::string& path) const { return tasks_.IsDuplicate(path); }

}  // namespace updown
