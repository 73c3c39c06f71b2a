#pragma once

#include <gmock/gmock.h>

#include <QAction>
#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/fake_frame.h"
#include "tests/support/person.h"
#include "transfers/transfer_status_dlg.h"

namespace updown::test {

using Column = StatusColumn;
using State = TransferState;

class MovedTicks : public TickCounter {
 public:
  std::uint32_t Now() const override { return now; }
  std::uint32_t now = 1000;
};

// The window with its frame, its desktop and a person who answers boxes.
class WindowWorld : public ::testing::Test {
 protected:
  WindowWorld() {
    window_.SetFrameWindow(frame_.FrameWindow());
    window_.InitDialog();
    list_ = window_.findChild<CListCtrlEx*>(u"transferList"_qs);
  }

  // A task of this run, as a Save makes it; the row is there on return.
  TaskPointer AddTask(State state, std::uint32_t done = 0, std::uint32_t total = 0,
                      bool folder = false) {
    const std::string name = "file" + std::to_string(++made_);
    TaskPointer task = frame_.Tasks().AddDownload(DraftOf(frame_, name, "/pkg/" + name),
                                                  disk_.File(name), true, frame_.FrameWindow());
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
  void TaskState(const TransferTask& task, int code) {
    Send(frame_message::kTaskState, task.id, code);
  }
  std::string Cell(int row, Column column) const {
    const auto* const model = list_->model();
    return ToUtf8(model->index(row, static_cast<int>(column)).data().toString());
  }
  // The four cells that tell of the transfer's course.
  std::string Course(int row) const {
    return Cell(row, Column::Transferred) + "|" + Cell(row, Column::Progress) + "|" +
           Cell(row, Column::Rate) + "|" + Cell(row, Column::Remaining);
  }
  int Rows() const { return list_->model()->rowCount(); }
  // How often the frame was asked for something.
  auto Asked(const std::string& what) const {
    return std::count(frame_.log.begin(), frame_.log.end(), what);
  }
  void Choose(int row, const QString& command) {
    list_->SelectRow(row);
    window_.findChild<QAction*>(command)->trigger();
    QCoreApplication::processEvents();
  }

  FakeFrame frame_;
  Person person_;
  MovedTicks ticks_;
  TemporaryFolder disk_;
  Log opened_;            // by the desktop
  QString chosenFolder_;  // the answer to the next question for a folder
  CTransferStatusDlg window_{frame_, ticks_, MakeDesktop()};
  CListCtrlEx* list_ = nullptr;

 private:
  Desktop MakeDesktop() {
    return {[this](const QString& path) { opened_.push_back("file " + ToUtf8(path)); },
            [this](const QString& path) { opened_.push_back("folder " + ToUtf8(path)); },
            [this](QWidget*, const QString&) { return chosenFolder_; }};
  }

  int made_ = 0;
};

}  // namespace updown::test
