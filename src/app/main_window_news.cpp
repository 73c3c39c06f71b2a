#include "app/main_window.h"
#include "engine/result_texts.h"
#include "platform/qt/text.h"
#include "resources/qt/texts.h"

// What the engine tells, on the main thread.

namespace updown {

// Queued once more: a task's row is made by a call that may still wait, and news find it only then.
template <typename News>
void MainWindow::TellStatus(News news) {
  mainThread_.Post([this, news] {
    if (statusWindow_) {
      news(*statusWindow_);
    }
  });
}

void MainWindow::TaskStarted(TaskId task) noexcept {
  if (downloads_.Find(task)) {
    TellStatus([task](TransferWindow& status) { status.ShowStarted(task); });
  }
}

void MainWindow::BlockDone(TaskId task) noexcept {
  keeper_.BlockDone();
  TellStatus([task](TransferWindow& status) { status.ShowBlock(task); });
}

void MainWindow::TaskWaiting(TaskId task) noexcept {
  TellStatus([task](TransferWindow& status) { status.ShowWaiting(task); });
}

void MainWindow::TaskEnded(TaskId task, const TransferResult& result) noexcept {
  const TaskPointer ended = downloads_.Find(task);
  if (!ended) {
    return;
  }
  TellStatus([task, result](TransferWindow& status) { status.ShowEnded(task, result); });
  if (ended->record) {
    NotifyOfEnd(*ended->record, result);
  }
  if (const auto header = downloads_.TakeHeader(*ended)) {
    area_.HeaderEnded(header->file, header->arrived);
  }
}

void MainWindow::ConnectNotifications() {
  connect(&notifications_, &DesktopNotifications::Clicked, this, [this](NotificationKind kind) {
    kind == NotificationKind::Packages ? Raise() : ShowStatus();
  });
  // What the first listing brings is no news.
  connect(&area_, &PackageArea::ConnectionChanged, this, [this] {
    if (area_.Refreshing() && area_.State() == PackageArea::Connection::There) {
      listedOnce_ = true;
    }
  });
  connect(&area_, &QAbstractItemModel::rowsInserted, this,
          [this](const QModelIndex& /*parent*/, int first, int last) {
            for (int row = first; listedOnce_ && row <= last; ++row) {
              notifications_.PackageCame(FromUtf8(area_.NameAt(area_.index(row, 0, area_.Root()))));
            }
          });
}

void MainWindow::NotifyOfEnd(const TransferRecord& record, const TransferResult& result) {
  const bool failed = record.state == TransferState::Failed;
  if (record.keepAcrossRestart != 0 && (failed || record.state == TransferState::Finished)) {
    const std::string target = record.Paths().localPath;
    const QString why =
        failed ? ToQString(ResultRowText(result.code, result.systemError)) : QString();
    notifications_.TransferEnded(FromUtf8(target.substr(target.rfind('/') + 1)), why);
  }
}

void MainWindow::SaveNeeded() noexcept { keeper_.TasksChanged(); }

void MainWindow::OnSavingChanged(int error) {
  if (error == 0) {
    notices_->ClearNotice(NoticeBar::Source::TaskList);
  } else {
    notices_->SetNotice(
        NoticeBar::Source::TaskList,
        QStringLiteral("%1 [%2]").arg(Text(StringId::ListNotSaved), qt_error_string(error)));
  }
}

void MainWindow::ShowAddedTask(TaskId task) {
  if (statusWindow_) {
    statusWindow_->setWindowState(statusWindow_->windowState() & ~Qt::WindowMinimized);
    statusWindow_->show();
    TellStatus([task](TransferWindow& status) { status.AddRow(task); });
  }
}

void MainWindow::ShowMovedTask(TaskId task) {
  TellStatus([task](TransferWindow& status) { status.ShowPaths(task); });
}

void MainWindow::ShowRestoredTask(TaskId task) {
  mainThread_.Post([this, task] {
    if (statusWindow_ && downloads_.Find(task)) {
      if (!statusWindow_->isVisible()) {
        statusWindow_->show();  // a window manager is not told of a hidden window's states
      }
      statusWindow_->showMinimized();
      TellStatus([task](TransferWindow& status) { status.AddRow(task); });
    }
  });
}

}  // namespace updown
