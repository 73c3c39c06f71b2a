#include "app/downloads.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <algorithm>
#include <utility>

#include "engine/result_texts.h"
#include "platform/folders.h"
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

std::optional<std::string> Downloads::RunDialog(QFileDialog& dialog, const QString& name) {
  dialog.setObjectName(name);
  dialog.setDirectory(saveFolder_.isEmpty() ? FirstSaveFolder() : saveFolder_);
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
    return std::nullopt;
  }
  return ToUtf8(dialog.selectedFiles().constFirst());
}

std::optional<std::string> Downloads::AskForTarget(const std::string& displayName) {
  QFileDialog dialog(&owner_, Text(StringId::Save), {}, AllFilesFilter());
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setFileMode(QFileDialog::AnyFile);
  dialog.selectFile(FromUtf8(displayName));
  auto target = RunDialog(dialog, u"saveDialog"_qs);
  if (target) {
    saveFolder_ = QFileInfo(FromUtf8(*target)).absolutePath();
  }
  return target;
}

std::optional<std::string> Downloads::AskForFolder() {
  QFileDialog dialog(&owner_, Text(StringId::SaveAllTitle));
  dialog.setFileMode(QFileDialog::Directory);
  dialog.setOption(QFileDialog::ShowDirsOnly);
  auto folder = RunDialog(dialog, u"saveAllDialog"_qs);
  if (folder) {
    saveFolder_ = FromUtf8(*folder);
  }
  return folder;
}

bool Downloads::SaveFile(const std::string& name, const std::string& path) {
  askedPath_ = path;
  const std::optional<std::string> target = AskForTarget(name);
  if (!target) {
    return false;
  }
  if (tasks_.IsTargetInUse(*target)) {
    ShowNotice(&owner_, StringId::DuplicateTask);
    return true;
  }
  return TakeAdded(tasks_.AddDownload(DraftOf(name, askedPath_), *target, true));
}

// Nothing but the task writes there: to delete or redo it removes the whole folder.
std::string Downloads::NewFolderIn(const std::string& folder, const std::string& package) const {
  const auto taken = [this](const std::string& path) {
    const RecordList& records = tasks_.Records();
    return PathExists(path) || tasks_.IsTargetInUse(path) ||
           std::any_of(records.begin(), records.end(),
                       [&path](const auto& record) { return record->LocalPath() == path; });
  };
  const std::string first = (folder == "/" ? "" : folder) + "/" + package;
  std::string path = first;
  for (int number = 2; taken(path); ++number) {
    path = first + " (" + std::to_string(number) + ")";
  }
  return path;
}

bool Downloads::SavePackage(const std::string& package) {
  askedPath_ = "/" + package;
  const std::optional<std::string> folder = AskForFolder();
  if (!folder) {
    return false;
  }
  const std::string name = askedPath_.substr(1);
  return TakeAdded(tasks_.AddFolderDownload(DraftOf(name, askedPath_), NewFolderIn(*folder, name)));
}

bool Downloads::TakeAdded(const TaskPointer& task) {
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
  const std::string folder = "/" + package;
  if (askedPath_ == folder || askedPath_.starts_with(folder + "/")) {
    askedPath_.replace(0, folder.size(), "/" + newName);
  }
  const std::vector<TaskId> moved = tasks_.FollowRename(folder, "/" + newName);
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

bool Downloads::ResumeTask(TaskId task) { return TellUnlessDone(tasks_.Resume(task)); }

bool Downloads::RedoTask(TaskId task) { return TellUnlessDone(tasks_.Redo(task)); }

void Downloads::MoveTask(TaskId task, const std::string& localPath) {
  if (const TaskPointer moved = Find(task)) {
    moved->record->SetLocalPath(localPath);
    TasksChanged();
  }
}

void Downloads::DeleteTask(TaskId task) {
  tasks_.RemoveTask(task, TaskStore::LocalFiles::Remove);
  TasksChanged();
}

// Another task has the same target.
bool Downloads::TellUnlessDone(bool done) {
  TasksChanged();
  if (!done) {
    ShowNotice(&owner_, StringId::DuplicateTask);
  }
  return done;
}

void Downloads::TasksChanged() { Q_EMIT SaveNeeded(); }

bool Downloads::IsDuplicate(const std::string& path) const { return tasks_.IsDuplicate(path); }

}  // namespace updown
