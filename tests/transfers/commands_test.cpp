#include <QMenu>
#include <QTest>
#include <filesystem>

#include "tests/transfers/window_world.h"

namespace updown::test {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

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
  Choose(0, u"pause"_qs);
  Choose(1, u"pause"_qs);
  EXPECT_EQ(folder->record->state, State::Stopped);
  EXPECT_EQ(folder->childRecord->state, State::Stopped);
  EXPECT_EQ(failed->record->state, State::Failed);
}

TEST_F(StatusCommands, ResumeGoesOnWhereItStood) {
  // Paused in its last block: all is there, and the worker has only to say so.
  const TaskPointer task = AddTask(State::Stopped, 9000, 9000, true);
  task->childRecord->state = State::Failed;
  ticks_.now = 77;
  Choose(0, u"resume"_qs);
  EXPECT_EQ(task->record->state, State::Queued);
  EXPECT_EQ(task->childRecord->state, State::Queued);
  EXPECT_EQ(task->record->doneBytes, 9000U);
  EXPECT_EQ(task->record->statistics.lastSampleTick, 77U);
}

TEST_F(StatusCommands, RedoBeginsFromNothing) {
  const TaskPointer task = AddTask(State::Finished, 5000, 5000, true);
  TransferRecord& record = *task->record;
  fs::create_directory(record.LocalPath());
  WriteFile(record.LocalPath() + "/inside", "x");
  record.remoteTime = 9;
  task->childRecord->doneBytes = 7;
  task->childRecord->state = State::Finished;
  ticks_.now += 10;
  EndTask(*task, 0);

  person_.answer = QMessageBox::Cancel;
  Choose(0, u"redo"_qs);
  EXPECT_EQ(record.state, State::Finished);
  EXPECT_TRUE(fs::exists(record.LocalPath()));

  person_.answer = QMessageBox::Ok;
  Choose(0, u"redo"_qs);
  EXPECT_EQ(person_.seen.back(), "Are you sure you want to redo the task?");
  EXPECT_EQ(record.state, State::Queued);
  EXPECT_EQ(record.totalBytes + record.doneBytes + record.remoteTime, 0U);
  EXPECT_EQ(record.statistics.elapsedTicks + record.statistics.startBytes, 0U);
  EXPECT_EQ(record.statistics.startTick, ticks_.now);
  EXPECT_EQ(task->childRecord->doneBytes, 0U);
  EXPECT_EQ(task->childRecord->state, State::Queued);
  EXPECT_EQ(Course(0), "4 KB|||");
  EXPECT_FALSE(fs::exists(record.LocalPath()));
}

TEST_F(StatusCommands, RedoOfAFinishedTaskKeepsTheLimit) {
  const TaskPointer finished = AddTask(State::Finished, 10, 10);
  const std::string file = MakeFile(*finished);
  for (int count = 0; count < 5; ++count) {
    AddTask(State::Stopped);
  }
  Choose(0, u"redo"_qs);
  EXPECT_EQ(person_.seen.back(),
            "The maximum number of data streams has been reached. Operation aborted.");
  EXPECT_EQ(finished->record->state, State::Finished);
  EXPECT_TRUE(fs::exists(file));
  Choose(1, u"redo"_qs);  // one of the five counts already
  EXPECT_EQ(Asked("redo"), 1);
}

TEST_F(StatusCommands, DeleteTakesPartialFilesAlong) {
  for (const State state : {State::Queued, State::Stopped, State::Failed, State::Finished}) {
    const TaskPointer task = AddTask(state, 4, 8, state == State::Queued);
    const std::string file = MakeFile(*task);
    person_.answer = QMessageBox::Cancel;
    Choose(0, u"delete"_qs);
    EXPECT_EQ(Rows(), 1);
    EXPECT_EQ(task->record->state, state);
    person_.answer = QMessageBox::Ok;
    Choose(0, u"delete"_qs);
    EXPECT_EQ(person_.seen.back(), "Are you sure you want to make this deletion?");
    EXPECT_EQ(fs::exists(file), state == State::Finished);
    EXPECT_EQ(Rows(), 0);
    EXPECT_EQ(tasks_.store.Find(task->id), nullptr);
    EXPECT_EQ(tasks_.store.Records().size(), 0U);
  }
}

// What the worker still writes goes behind its end.
TEST_F(StatusCommands, RedoAndDeleteWhileTheWorkerRuns) {
  TaskPointer held = AddTask(State::Queued, 4, 8);  // as the worker holds it
  for (const bool redo : {true, false}) {
    const auto run = held->BeginRun();
    const std::string file = MakeFile(*held);
    Choose(0, redo ? u"redo"_qs : u"delete"_qs);
    EXPECT_TRUE(run->Stopping() && run->Sockets()->IsCut());
    EXPECT_EQ(held->record->state, State::Stopped);
    EXPECT_TRUE(fs::exists(file));
    held->EndRun();
    EXPECT_FALSE(fs::exists(file));
    EXPECT_EQ(held->record->state, redo ? State::Queued : State::Stopped);
    EXPECT_EQ(held->Bytes(), 0U);
  }
  // What the worker still says is about a task that is gone, and so is this announcement.
  window_.AddRow(held->id);
  window_.ShowBlock(held->id);
  EndTask(*held, -8194);
  EXPECT_EQ(Rows(), 0);
  const std::weak_ptr<TransferTask> task = held;
  held.reset();
  EXPECT_TRUE(task.expired());
}

TEST_F(StatusCommands, DeleteLeavesWhatIsTheUsersOwn) {
  AddTask(State::Stopped);
  const TaskPointer second = AddTask(State::Stopped);
  // While the question stands, the task finishes.
  const std::string file = MakeFile(*second);
  person_.first = [&second](QMessageBox&) { second->record->state = State::Finished; };
  Choose(1, u"delete"_qs);
  EXPECT_EQ(Rows(), 1);
  EXPECT_EQ(Cell(0, Column::SourceEnd), "/pkg/file1");
  EXPECT_TRUE(fs::exists(file));

  // An upload's target is no local path.
  const TaskPointer upload = AddTask(State::Failed);
  upload->record->direction = 1;
  upload->record->SetPaths({file, disk_.File("source")});
  Choose(1, u"delete"_qs);
  EXPECT_EQ(Rows(), 1);
  EXPECT_TRUE(fs::exists(file));
}

TEST_F(StatusCommands, OpensAndMoves) {
  const TaskPointer task = AddTask(State::Finished, 4, 4);
  const std::string file = MakeFile(*task);
  Choose(0, u"openFile"_qs);
  Choose(0, u"openFolder"_qs);
  EXPECT_EQ(opened_, (Log{"file " + file, "folder " + file}));

  fs::create_directory(disk_.File("other"));
  const std::pair<std::string, std::string> moves[] = {
      {"", file}, {disk_.File("missing"), file}, {disk_.File("other/"), disk_.File("other/file1")}};
  for (const auto& [folder, path] : moves) {
    chosenFolder_ = FromUtf8(folder);
    Choose(0, u"moveFile"_qs);
    EXPECT_EQ(task->record->LocalPath(), path);
    EXPECT_EQ(Cell(0, Column::TargetEnd), path);
    EXPECT_EQ(ReadFile(path), "part");
  }
  EXPECT_THAT(person_.seen, ElementsAre(HasSubstr("could not be moved")));

  // Another file of that name is replaced only after a question, and never by a Cancel.
  WriteFile(file, "old");
  chosenFolder_ = FromUtf8(disk_.Path());
  for (const auto answer : {QMessageBox::Cancel, QMessageBox::Ok}) {
    person_.answer = answer;
    Choose(0, u"moveFile"_qs);
    EXPECT_EQ(ReadFile(file), answer == QMessageBox::Ok ? "part" : "old");
  }
  EXPECT_THAT(person_.seen.back(), HasSubstr("Replace it?"));
  EXPECT_EQ(task->record->LocalPath(), file);
}

TEST_F(StatusCommands, TheKeyboardReachesThemAll) {
  window_.show();
  AddTask(State::Finished);
  const TaskPointer task = AddTask(State::Queued, 1, 2);
  list_->SelectRow(1);
  task->BeginRun();
  QTest::keyClick(list_, Qt::Key_F10, Qt::ShiftModifier);
  auto* const menu = window_.findChild<QMenu*>(u"statusMenu"_qs);
  ASSERT_TRUE(menu->isVisible());
  std::string enabled;
  for (const QAction* action : menu->actions()) {
    enabled += action->isEnabled() ? ToUtf8(action->objectName()) + " " : "";
  }
  EXPECT_EQ(enabled, "pause redo delete openFolder ");
  QTest::keyClick(menu, Qt::Key_Down);
  QTest::keyClick(menu, Qt::Key_Return);
  EXPECT_EQ(task->record->state, State::Stopped);
  QTest::keyClick(list_, Qt::Key_Delete);
  EXPECT_EQ(Rows(), 1);
  task->EndRun();
}

}  // namespace
}  // namespace updown::test
