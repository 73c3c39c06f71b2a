#include <QMenu>
#include <QTest>
#include <filesystem>

#include "tests/status/window_world.h"

namespace updown::test {
namespace {

namespace fs = std::filesystem;
using Column = StatusColumn;
using State = TransferState;

class StatusCommands : public WindowWorld {
 protected:
  // The task's partial file.
  std::string MakeFile(const TransferTask& task) {
    WriteFile(task.record->LocalPath(), "part");
    return task.record->LocalPath();
  }
};

TEST_F(StatusCommands, PauseStopsQueuedTasksOnly) {
  const TaskPointer folder = AddTask(State::Queued, 0, 0, true);
  const TaskPointer failed = AddTask(State::Failed);
  list_->SelectRow(-1);
  window_.findChild<QAction*>(u"pause"_qs)->trigger();  // nothing to work on
  EXPECT_EQ(folder->record->state, State::Queued);
  Choose(0, u"pause"_qs);
  Choose(1, u"pause"_qs);
  EXPECT_EQ(folder->record->state, State::Stopped);
  EXPECT_EQ(folder->childRecord->state, State::Stopped);
  EXPECT_EQ(failed->record->state, State::Failed);
  EXPECT_EQ(frame_.wakes, 0);
}

TEST_F(StatusCommands, ResumeGoesOnWhereItStood) {
  // Paused in its last block: all is there, and the worker has only to say so.
  const TaskPointer task = AddTask(State::Stopped, 9000, 9000, true);
  task->childRecord->state = State::Failed;
  task->lastResult = 8194;
  task->BeginRun();
  ticks_.now = 77;
  Choose(0, u"resume"_qs);
  EXPECT_EQ(task->record->state, State::Queued);
  EXPECT_EQ(task->childRecord->state, State::Queued);
  EXPECT_EQ(task->record->doneBytes, 9000U);
  EXPECT_EQ(task->record->statistics.lastSampleTick, 77U);
  EXPECT_EQ(task->lastResult, 0);
  EXPECT_FALSE(task->Running());
  EXPECT_EQ(frame_.wakes, 1);
  EXPECT_EQ(frame_.connections, 0);
  EXPECT_TRUE(boxes_.empty());
}

TEST_F(StatusCommands, ARefusedSessionIsOpenedAnew) {
  const TaskPointer task = AddTask(State::Failed);
  task->SetSessid("old");
  for (const bool reachable : {false, true}) {
    for (const auto& command : {u"resume"_qs, u"redo"_qs}) {
      task->record->state = State::Failed;
      task->lastResult = 8198;
      frame_.grantedSessid = reachable ? "fresh " + ToUtf8(command) : "";
      Choose(0, command);
      EXPECT_EQ(task->record->state, reachable ? State::Queued : State::Failed);
      EXPECT_EQ(task->lastResult, reachable ? 0 : 8198);
      EXPECT_EQ(task->Sessid(), reachable ? frame_.grantedSessid : "old");
    }
  }
  EXPECT_EQ(frame_.wakes, 2);
  EXPECT_EQ(boxes_.size(), 1U);  // the question of the Redo that could go on
  EXPECT_EQ(frame_.connections, 4);
}

TEST_F(StatusCommands, RedoBeginsFromNothing) {
  const TaskPointer task = AddTask(State::Finished, 5000, 5000, true);
  fs::create_directory(task->record->LocalPath());
  WriteFile(task->record->LocalPath() + "/inside", "x");
  task->record->remoteTime = 9;
  task->childRecord->doneBytes = 7;
  task->childRecord->state = State::Finished;
  task->lastResult = 8194;
  ticks_.now += 10;
  Send(frame_message::kTaskState, task->id, 0);

  answer_ = QMessageBox::Cancel;
  Choose(0, u"redo"_qs);
  EXPECT_EQ(task->record->state, State::Finished);
  EXPECT_TRUE(fs::exists(task->record->LocalPath()));

  answer_ = QMessageBox::Ok;
  Choose(0, u"redo"_qs);
  EXPECT_EQ(boxes_.back(), "Are you sure you want to redo the task?");
  const TransferRecord& record = *task->record;
  EXPECT_EQ(record.state, State::Queued);
  EXPECT_EQ(record.totalBytes + record.doneBytes + record.remoteTime, 0U);
  EXPECT_EQ(record.statistics.elapsedTicks + record.statistics.startBytes, 0U);
  EXPECT_EQ(record.statistics.startTick, ticks_.now);
  EXPECT_EQ(task->childRecord->doneBytes, 0U);
  EXPECT_EQ(task->childRecord->state, State::Queued);
  EXPECT_EQ(task->lastResult, 0);
  EXPECT_EQ(Cell(0, Column::Progress) + Cell(0, Column::Rate) + Cell(0, Column::Remaining), "");
  EXPECT_FALSE(fs::exists(record.LocalPath()));
  EXPECT_EQ(frame_.wakes, 1);
}

TEST_F(StatusCommands, RedoOfAFinishedTaskKeepsTheLimit) {
  const TaskPointer finished = AddTask(State::Finished, 10, 10);
  const std::string file = MakeFile(*finished);
  for (int count = 0; count < 5; ++count) {
    AddTask(State::Stopped);
  }
  Choose(0, u"redo"_qs);
  EXPECT_EQ(boxes_.back(),
            "The maximum number of data streams has been reached. Operation aborted.");
  EXPECT_EQ(finished->record->state, State::Finished);
  EXPECT_TRUE(fs::exists(file));
  Choose(1, u"redo"_qs);  // one of the five counts already
  EXPECT_EQ(frame_.wakes, 1);
}

TEST_F(StatusCommands, DeleteTakesPartialFilesAlong) {
  for (const State state : {State::Queued, State::Stopped, State::Failed, State::Finished}) {
    const TaskPointer task = AddTask(state, 4, 8, state == State::Queued);
    const std::string file = MakeFile(*task);
    answer_ = QMessageBox::Cancel;
    Choose(0, u"delete"_qs);
    EXPECT_EQ(Rows(), 1);
    EXPECT_EQ(task->record->state, state);
    answer_ = QMessageBox::Ok;
    Choose(0, u"delete"_qs);
    EXPECT_EQ(boxes_.back(), "Are you sure you want to make this deletion?");
    EXPECT_EQ(fs::exists(file), state == State::Finished);
    EXPECT_EQ(Rows(), 0);
    EXPECT_EQ(frame_.Tasks().Find(task->id), nullptr);
    EXPECT_EQ(frame_.Tasks().Records().Size(), 0U);
  }
}

TEST_F(StatusCommands, DeleteWhileTheWorkerRuns) {
  TaskPointer held = AddTask(State::Queued, 4, 8);  // as the worker holds it
  held->BeginRun();
  Choose(0, u"delete"_qs);
  EXPECT_EQ(Rows(), 0);
  EXPECT_EQ(held->record->state, State::Stopped);
  // What the worker still says is about a task that is gone.
  BlockDone(*held);
  Send(frame_message::kTaskState, held->id, -8194);
  EXPECT_EQ(held->lastResult, 0);
  const std::weak_ptr<TransferTask> task = held;
  held.reset();
  EXPECT_TRUE(task.expired());
}

TEST_F(StatusCommands, DeleteFindsTheRowAfterTheQuestion) {
  AddTask(State::Stopped);
  const TaskPointer second = AddTask(State::Stopped);
  // While the question stands, the task finishes: its file is the user's now.
  const std::string file = MakeFile(*second);
  whileAsked_ = [&second] { second->record->state = State::Finished; };
  Choose(1, u"delete"_qs);
  EXPECT_EQ(Rows(), 1);
  EXPECT_EQ(Cell(0, Column::SourceEnd), "/pkg/file1");
  EXPECT_TRUE(fs::exists(file));
}

TEST_F(StatusCommands, AnUploadsTargetIsNoLocalPath) {
  const TaskPointer task = AddTask(State::Failed);
  task->record->direction = 1;
  const std::string here = disk_.File("here");
  WriteFile(here, "mine");
  task->record->SetPaths({here, disk_.File("source")});
  Choose(0, u"delete"_qs);
  EXPECT_EQ(Rows(), 0);
  EXPECT_TRUE(fs::exists(here));
}

TEST_F(StatusCommands, DeleteKeyLeavesQueuedTasksAlone) {
  window_.show();
  const TaskPointer task = AddTask(State::Queued);
  list_->SelectRow(0);
  QTest::keyClick(list_, Qt::Key_Delete);
  EXPECT_TRUE(boxes_.empty());
  task->record->state = State::Failed;
  QTest::keyClick(list_, Qt::Key_Delete);
  EXPECT_EQ(Rows(), 0);
}

TEST_F(StatusCommands, OpensAndMoves) {
  const TaskPointer task = AddTask(State::Finished, 4, 4);
  const std::string file = MakeFile(*task);
  Choose(0, u"openFile"_qs);
  Choose(0, u"openFolder"_qs);
  EXPECT_EQ(opened_, (std::vector<std::string>{"file " + file, "folder " + file}));

  Choose(0, u"moveFile"_qs);  // no folder chosen
  chosenFolder_ = FromUtf8(disk_.File("missing"));
  Choose(0, u"moveFile"_qs);
  EXPECT_EQ(task->record->LocalPath(), file);
  EXPECT_EQ(Cell(0, Column::TargetEnd), file);

  fs::create_directory(disk_.File("other"));
  chosenFolder_ = FromUtf8(disk_.File("other/"));
  Choose(0, u"moveFile"_qs);
  EXPECT_EQ(task->record->LocalPath(), disk_.File("other/file1"));
  EXPECT_EQ(Cell(0, Column::TargetEnd), disk_.File("other/file1"));
  EXPECT_EQ(ReadFile(disk_.File("other/file1")), "part");
}

TEST_F(StatusCommands, TheMenuOpensOnTheRowByKey) {
  window_.show();
  AddTask(State::Finished);
  const TaskPointer task = AddTask(State::Queued, 1, 2);
  list_->SelectRow(1);
  QTest::keyClick(list_, Qt::Key_F10, Qt::ShiftModifier);
  auto* const menu = window_.findChild<QMenu*>(u"statusMenu"_qs);
  ASSERT_TRUE(menu->isVisible());
  std::string enabled;
  for (const QAction* action : menu->actions()) {
    enabled += action->isEnabled() ? ToUtf8(action->objectName()) + " " : "";
  }
  EXPECT_EQ(enabled, "pause openFolder ");
  // With the keyboard alone: the one item that stands first is Pause.
  QTest::keyClick(menu, Qt::Key_Down);
  QTest::keyClick(menu, Qt::Key_Return);
  EXPECT_EQ(task->record->state, State::Stopped);
}

}  // namespace
}  // namespace updown::test
