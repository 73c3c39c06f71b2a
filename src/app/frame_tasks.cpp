#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QStandardPaths>

#include "app/main_frame.h"
#include "app/offered_name.h"
#include "engine/frame_messages.h"
#include "platform/qt/text.h"
#include "service/result_codes.h"
#include "widgets/boxes.h"

namespace updown {
namespace {

QString FirstSaveFolder() {
  const QString downloads = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
  return QFileInfo(downloads).isDir() ? downloads : QDir::homePath();
}

// The string names the pattern as users of other systems know it; here it would leave out every
// file without a dot.
QString AllFilesFilter() {
  return Text(StringId::FileFilterAll, u"All files(*.*)").replace(u"*.*"_qs, u"*"_qs);
}

}  // namespace

std::optional<std::string> CMainFrame::AskForTarget(const std::string& displayName) {
  QFileDialog dialog(this, Text(StringId::Save),
                     saveFolder_.isEmpty() ? FirstSaveFolder() : saveFolder_, AllFilesFilter());
  dialog.setObjectName(u"saveDialog"_qs);
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setFileMode(QFileDialog::AnyFile);
  dialog.selectFile(FromUtf8(OfferedName(displayName)));
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
  keeper_.TasksChanged();
  if (statusWindow_) {
    statusWindow_->showNormal();
    PostWindowMessage(statusWindow_->Handle(), frame_message::kTaskAdded, task->id, 0);
  }
  return true;
}

void CMainFrame::AddCacheDownload(bool keep, const TaskDraft& draft) {
  const std::string target = cache_.BeginFetch(draft.displayName);
  if (!target.empty() && tasks_.AddDownload(draft, target, keep, FrameWindow())) {
    context_->schedulerWake.Set();
  }
}

// True if the record has brought a header that is now in the cache.
bool CMainFrame::TakeIntoCache(const TransferRecord& record) {
  return record.keepAcrossRestart == 0 && record.state == TransferState::Finished &&
         cache_.EndFetch(record.LocalPath());
}

void CMainFrame::RestoreTasks() {
  if (tasks_.RestoreTasks(session_.Sessid(), FrameWindow())) {
    context_->schedulerWake.Set();
  }
}

void CMainFrame::RemoveTask(TaskId task) {
  tasks_.RemoveTask(task);
  keeper_.TasksChanged();
}

bool CMainFrame::IsDuplicateUserTask(const std::u16string& path) {
  if (!tasks_.IsDuplicate(path, TaskStore::DuplicateScope::EveryState)) {
    return false;
  }
  if (!path.empty()) {
    ShowNotice(this, StringId::DuplicateTask, u"Duplicate task. Please try again.");
  }
  return true;
}

void CMainFrame::OnSavingChanged(int error) {
  if (error == 0) {
    notices_->ClearNotice(NoticeBar::Source::TaskList);
  } else {
    notices_->SetNotice(
        NoticeBar::Source::TaskList,
        QStringLiteral("%1 [%2]").arg(Text(StringId::ListNotSaved), qt_error_string(error)));
  }
}

}  // namespace updown
