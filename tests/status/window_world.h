#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QAction>
#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <memory>
#include <string>
#include <vector>

#include "engine/frame_messages.h"
#include "platform/qt/message_target.h"
#include "platform/qt/text.h"
#include "platform/unique_fd.h"
#include "status/transfer_status_dlg.h"
#include "tests/service/script.h"
#include "tests/support/temporary_folder.h"

namespace updown::test {

class MovedTicks : public TickCounter {
 public:
  std::uint32_t Now() const override { return now; }
  std::uint32_t now = 1000;
};

// The frame as the status window knows it: real tasks, records and session; the service at the
// session's other end grants `grantedSessid`, or cannot be reached while that is empty.
class FakeFrame : public FrameOperations {
 public:
  WindowHandle FrameWindow() const override { return target_.Handle(); }
  void ReportResult(std::int64_t) override {}
  bool AddUserDownload(bool, const TaskDraft&) override { return false; }
  void AddCacheDownload(bool, const TaskDraft&) override {}
  void RestoreTasks() override { ++restores; }
  void RemoveTask(TaskId task) override { store_.RemoveTask(task); }
  TaskStore& Tasks() override { return store_; }
  SharedSession& Session() override { return session_; }
  const LaunchState& Launch() const override { return launch_; }
  const PackageCache& Cache() const override { return cache_; }

  std::string grantedSessid;
  int connections = 0;
  int wakes = 0;
  int restores = 0;

 private:
  int Connect() {
    ++connections;
    int ends[2];
    if (grantedSessid.empty() || socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
      return -1;
    }
    service_ = UniqueFd(ends[1]);
    const std::string reply = testing::First(32768, grantedSessid);
    EXPECT_EQ(write(ends[1], reply.data(), reply.size()), static_cast<ssize_t>(reply.size()));
    return ends[0];
  }
  MessageResult Receive(const WindowMessage& message) {
    wakes += message.number == frame_message::kWakeScheduler ? 1 : 0;
    return 0;
  }

  LaunchState launch_;
  UniqueFd service_;
  FileService dialect_;
  TaskStore store_{std::make_shared<TaskQueue>(), launch_};
  SharedSession session_{dialect_, launch_, nullptr,
                         [this](std::string_view, std::uint16_t) { return Connect(); }};
  PackageCache cache_{std::string()};
  MessageTarget target_{[this](const WindowMessage& message) { return Receive(message); }};
};

// The window with its frame, its desktop and a person who answers boxes.
class WindowWorld : public ::testing::Test {
 protected:
  WindowWorld() {
    window_.SetFrameWindow(frame_.FrameWindow());
    window_.InitDialog();
    list_ = window_.findChild<CListCtrlEx*>(u"transferList"_qs);
    QObject::connect(&person_, &QTimer::timeout, &person_, [this] { AnswerBox(); });
    person_.start(0);
  }

  // A task of this run, as a Save makes it; the row is there on return.
  TaskPointer AddTask(TransferState state, std::uint32_t done = 0, std::uint32_t total = 0,
                      bool folder = false) {
    TaskDraft draft;
    draft.displayName = "file";
    draft.remotePath = "/pkg/file" + std::to_string(++made_);
    TaskPointer task = frame_.Tasks().AddDownload(draft, disk_.File("file" + std::to_string(made_)),
                                                  true, frame_.FrameWindow());
    task->record->state = state;
    task->record->doneBytes = done;
    task->record->totalBytes = total;
    if (folder) {
      task->record->isFolder = 1;
      task->isFolder = true;
      task->childRecord = frame_.Tasks().CreateRecord();
      task->childRecord->parentRecordId = task->record->recordId;
    }
    Send(frame_message::kTaskAdded, task->id, 0);
    return task;
  }
  void Send(std::uint32_t number, std::uintptr_t wParam, LongParam lParam) {
    SendWindowMessage(window_.Handle(), number, wParam, lParam);
  }
  void BlockDone(const TransferTask& task) {
    Send(frame_message::kBlockDone, task.record->recordId, 0);
  }
  std::string Cell(int row, StatusColumn column) const {
    const auto* const model = list_->model();
    return ToUtf8(model->index(row, static_cast<int>(column)).data().toString());
  }
  int Rows() const { return list_->model()->rowCount(); }

  void Choose(int row, const QString& command) {
    list_->SelectRow(row);
    window_.findChild<QAction*>(command)->trigger();
    QCoreApplication::processEvents();
  }

  FakeFrame frame_;
  MovedTicks ticks_;
  TemporaryFolder disk_;
  std::vector<std::string> opened_;  // by the desktop
  QString chosenFolder_;             // the answer to the next question for a folder
  CTransferStatusDlg window_{frame_, ticks_, MakeDesktop()};
  CListCtrlEx* list_ = nullptr;
  QMessageBox::StandardButton answer_ = QMessageBox::Ok;  // what the person presses in boxes
  std::vector<std::string> boxes_;                        // the texts the person has seen
  std::function<void()> whileAsked_;                      // happens before the person answers

 private:
  Desktop MakeDesktop() {
    return {[this](const QString& path) { opened_.push_back("file " + ToUtf8(path)); },
            [this](const QString& path) { opened_.push_back("folder " + ToUtf8(path)); },
            [this](QWidget*, const QString&) { return chosenFolder_; }};
  }
  void AnswerBox() {
    auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (box == nullptr) {
      return;
    }
    boxes_.push_back(ToUtf8(box->text()));
    if (whileAsked_) {
      whileAsked_();
    }
    QAbstractButton* const button = box->button(answer_);
    (button != nullptr ? button : box->button(QMessageBox::Ok))->click();
  }

  QTimer person_;
  int made_ = 0;
};

}  // namespace updown::test
