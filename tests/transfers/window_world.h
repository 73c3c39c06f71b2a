#pragma once

#include <gmock/gmock.h>

#include <QAction>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/person.h"
#include "tests/support/temporary_folder.h"
#include "transfers/transfer_window.h"

namespace updown::test {

using Log = std::vector<std::string>;

using Column = TransferColumn;
using State = TransferState;

class MovedTicks : public TickCounter {
 public:
  std::uint32_t Now() const override { return now; }
  std::uint32_t now = 1000;
};

// Real tasks.
class FakeTasks : public TransferTasks {
 public:
  TaskPointer Find(TaskId task) const override { return store.Find(task); }
  bool StreamLimitReached() const override { return store.StreamLimitReached(); }
  bool IsTargetInUse(const std::string& path) const override { return store.IsTargetInUse(path); }
  void PauseTask(TaskId task) override { store.Pause(task); }
  void ResumeTask(TaskId task) override { store.Resume(task); }
  void RedoTask(TaskId task) override {
    ++redone;
    store.Redo(task);
    store.Queue().EndRuns();  // as the scheduler does elsewhere
  }
  void DeleteTask(TaskId task) override {
    store.RemoveTask(task, TaskStore::LocalFiles::Remove);
    store.Queue().EndRuns();
  }

  int redone = 0;
  LaunchState launch;
  TaskStore store{std::make_shared<TaskQueue>(), launch};
};

// The window with its tasks, its desktop and a person who answers boxes.
class WindowWorld : public ::testing::Test {
 protected:
  WindowWorld() { list_ = window_.findChild<RowListView*>(u"transferList"_qs); }

  // A task of this run, as a Save makes it; the row is there on return.
  TaskPointer AddTask(State state, std::uint32_t done = 0, std::uint32_t total = 0,
                      bool folder = false) {
    const std::string name = "file" + std::to_string(++made_);
    TaskPointer task =
        tasks_.store.AddDownload({name, "/pkg/" + name, "server", 80}, disk_.File(name), true);
    task->record->state = state;
    task->record->doneBytes = done;
    task->record->totalBytes = total;
    if (folder) {
      task->record->isFolder = 1;
      task->isFolder = true;
      task->childRecord = std::make_shared<TransferRecord>();
    }
    window_.AddRow(task->id);
    return task;
  }
  void EndTask(const TransferTask& task, int code) { window_.ShowEnded(task.id, {code, 0, {}}); }
  std::string Cell(int row, Column column) const {
    return ToUtf8(list_->CellAt(row, static_cast<int>(column)).data().toString());
  }
  QString Tip(int row) const {
    return list_->CellAt(row, static_cast<int>(Column::State)).data(Qt::ToolTipRole).toString();
  }
  // The cells that tell of the transfer's course.
  std::string Course(int row) const {
    return Cell(row, Column::Transferred) + "|" + Cell(row, Column::Progress) + "|" +
           Cell(row, Column::Rate) + "|" + Cell(row, Column::Remaining) + "|" +
           Cell(row, Column::State);
  }
  int Rows() const { return list_->model()->rowCount(); }
  void Select(const std::vector<int>& rows) {
    list_->SelectRow(-1);
    for (const int row : rows) {
      list_->selectionModel()->select(list_->CellAt(row, 0),
                                      QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
  }
  void Trigger(const QString& command) {
    QCoreApplication::processEvents();
    window_.findChild<QAction*>(command)->trigger();
    QCoreApplication::processEvents();
  }
  void Choose(int row, const QString& command) {
    Select({row});
    Trigger(command);
  }

  FakeTasks tasks_;
  Person person_;
  MovedTicks ticks_;
  TemporaryFolder disk_;
  Log opened_;            // by the desktop
  QString chosenFolder_;  // the answer to the next question for a folder
  TransferWindow window_{tasks_, ticks_, MakeDesktop()};
  RowListView* list_ = nullptr;

 private:
  Desktop MakeDesktop() {
    return {[this](const QString& path) { opened_.push_back("file " + ToUtf8(path)); },
            [this](const QString& path) { opened_.push_back("folder " + ToUtf8(path)); },
            [this](QWidget*, const QString&) { return chosenFolder_; }};
  }

  int made_ = 0;
};

}  // namespace updown::test
