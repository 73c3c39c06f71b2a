#include <QDir>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QFileInfo>
#include <QStandardPaths>
#include <algorithm>
#include <chrono>

#include "app/main_frame.h"
#include "app/task_list_path.h"
#include "engine/frame_messages.h"
#include "localdata/file_names.h"
#include "localdata/files.h"
#include "localdata/tasklist.h"
#include "platform/qt/text.h"
#include "platform/text.h"
#include "service/result_codes.h"
#include "widgets/boxes.h"

namespace updown {
namespace {

constexpr std::chrono::milliseconds kSavePause{200};
constexpr int kSavePauseFactor = 9;  // saves take at most a tenth of the main thread's time

QString FirstSaveFolder() {
  const QString downloads = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
  return QFileInfo(downloads).isDir() ? downloads : QDir::homePath();
}

// The string names the pattern as users of other systems know it; here it would leave out every
// file without a dot.
QString AllFilesFilter() { return Text(StringId::FileFilterAll).replace(u"*.*"_qs, u"*"_qs); }

}  // namespace

std::optional<std::string> CMainFrame::AskForTarget(const std::string& displayName) {
  QFileDialog dialog(this, Text(StringId::Save),
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

bool CMainFrame::AddUserDownload(bool keep, const TaskDraft& draft) {
  if (draft.displayName.empty()) {
    return false;
  }
  const std::optional<std::string> target = AskForTarget(draft.displayName);
  if (!target) {
    return false;
  }
  const TaskPointer task = tasks_.AddDownload(draft, *target, keep, FrameWindow());
  if (!task) {
    // A path that the task list cannot hold.
    ReportResult(result::kFileOpen);
    return false;
  }
  context_->schedulerWake.Set();
  // Not only when a worker ends: what the user asked for outlives a crash from here on.
  RequestSave();
  if (statusWindow_) {
    statusWindow_->showNormal();
    PostWindowMessage(statusWindow_->Handle(), frame_message::kTaskAdded, task->id, 0);
  }
  return true;
}

void CMainFrame::AddCacheDownload(bool keep, const TaskDraft& draft) {
  const std::string target = cache_.PathOf(draft.displayName);
  if (!target.empty() && tasks_.AddDownload(draft, target, keep, FrameWindow())) {
    context_->schedulerWake.Set();
  }
}

// The next refresh repeats a failed fetch, but passes over what lies in the cache: so the piece
// that has arrived goes, unless such a repetition writes there already.
void CMainFrame::DropFailedHeader(const TransferRecord& record) {
  const RecordPaths paths = record.Paths();
  if (record.keepAcrossRestart == 0 && record.state == TransferState::Failed &&
      !tasks_.IsDuplicate(Utf8ToWide(paths.remotePath), TaskStore::DuplicateScope::QueuedOnly)) {
    DeleteLocalFile(paths.localPath);
  }
}

void CMainFrame::RestoreTasks() {
  if (tasks_.RestoreTasks(session_.Sessid(), FrameWindow())) {
    context_->schedulerWake.Set();
  }
}

void CMainFrame::RemoveTask(TaskId task) {
  tasks_.RemoveTask(task);
  RequestSave();
}

bool CMainFrame::IsDuplicateUserTask(const std::u16string& path) {
  if (!tasks_.IsDuplicate(path, TaskStore::DuplicateScope::EveryState)) {
    return false;
  }
  if (!path.empty()) {
    ShowNotice(this, StringId::DuplicateTask);
  }
  return true;
}

void CMainFrame::RequestSave() {
  if (saveThrottle_.Request()) {
    SaveAndPause();
  }
}

void CMainFrame::OnSavePause() {
  if (saveThrottle_.PauseOver()) {
    SaveAndPause();
  } else {
    saveTimer_.stop();
  }
}

// A list of many thousand tasks is saved less often, or the window would do nothing else while they
// run.
void CMainFrame::SaveAndPause() {
  QElapsedTimer saving;
  saving.start();
  SaveTasks();
  const std::chrono::milliseconds taken(saving.elapsed());
  saveTimer_.start(static_cast<int>(std::max(kSavePause, kSavePauseFactor * taken).count()), this);
}

void CMainFrame::SaveTasks() {
  if (const std::optional<std::string> path = TaskListPath(launch_.identityHash)) {
    SaveTaskList(tasks_.Records(), *path);
  }
}

}  // namespace updown
