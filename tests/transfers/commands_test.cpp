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
  // The names of the commands of rows that are offered.
  std::string Offered() {
    QCoreApplication::processEvents();
    std::string names;
    for (const QAction* action : list_->actions()) {
      const bool ofRows =
          !action->objectName().contains(u"All"_qs) && action->objectName() != u"clearFinished";
      names += ofRows && action->isEnabled() && action->isVisible() && !action->isSeparator()
                   ? ToUtf8(action->objectName()) + " "
                   : "";
    }
    return names;
  }
};

TEST_F(StatusCommands, PauseAndResumeGoOnWhereItStood) {
  // In its last block: all is there, and the worker has only to say so.
  const TaskPointer task = AddTask(State::Queued, 9000, 9000, true);
  for (const bool resume : {false, true}) {
    Choose(0, resume ? u"resume"_qs : u"pause"_qs);
    EXPECT_EQ(task->record->state, resume ? State::Queued : State::Stopped);
    EXPECT_EQ(task->childRecord->state, task->record->state);
    EXPECT_EQ(task->record->doneBytes, 9000U);
    EXPECT_EQ(Cell(0, Column::State), resume ? "Waiting" : "Paused");
  }
}

TEST_F(StatusCommands, RedoBeginsFromNothing) {
  const TransferRecord& record = *AddTask(State::Finished, 5000, 5000, true)->record;
  fs::create_directory(record.LocalPath());
  WriteFile(record.LocalPath() + "/inside", "x");

  person_.answer = QMessageBox::Cancel;
  Choose(0, u"redo"_qs);
  EXPECT_EQ(record.state, State::Finished);
  EXPECT_TRUE(fs::exists(record.LocalPath()));

  person_.answer = QMessageBox::Ok;
  Choose(0, u"redo"_qs);
  EXPECT_THAT(person_.seen.back(), HasSubstr("“file1” once more"));
  EXPECT_THAT(person_.seen.back(), HasSubstr("The folder “" + record.LocalPath() + "” is removed"));
  EXPECT_EQ(record.state, State::Queued);
  EXPECT_EQ(Course(0), "0 KB||||Waiting");
  EXPECT_FALSE(fs::exists(record.LocalPath()));
}

TEST_F(StatusCommands, RedoOfAFinishedTaskKeepsTheLimit) {
  const TaskPointer finished = AddTask(State::Finished, 10, 10);
  const std::string file = MakeFile(*finished);
  for (int count = 0; count < 5; ++count) {
    AddTask(State::Stopped);
  }
  Choose(0, u"redo"_qs);
  EXPECT_EQ(person_.seen.back().find("The maximum number of data streams has been reached."), 0U);
  EXPECT_EQ(finished->record->state, State::Finished);
  EXPECT_TRUE(fs::exists(file));
  Choose(1, u"redo"_qs);  // one of the five counts already
  EXPECT_EQ(tasks_.redone, 1);
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
    EXPECT_THAT(person_.seen.back(), HasSubstr(fs::path(file).filename().string()));
    EXPECT_THAT(person_.seen.back(), HasSubstr(state == State::Finished ? "stay" : "removed"));
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
    window_.ShowBlock(held->id);
    window_.ShowWaiting(held->id);
    EndTask(*held, 0);
    EXPECT_EQ(Rows() == 0 ? "" : Cell(0, Column::State), redo ? "Waiting" : "");
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
  const TaskPointer second = AddTask(State::Stopped);  // and finishes while the question stands
  const std::string file = MakeFile(*second);
  person_.first = [&second](QMessageBox&) { second->record->state = State::Finished; };
  Choose(1, u"delete"_qs);
  EXPECT_EQ(Rows(), 1);
  EXPECT_EQ(Cell(0, Column::From), "/pkg/file1");
  EXPECT_TRUE(fs::exists(file));

  const TaskPointer upload = AddTask(State::Failed);
  upload->record->direction = 1;
  upload->record->SetPaths({file, disk_.File("source")});
  Choose(1, u"delete"_qs);
  EXPECT_EQ(Rows(), 1);
  EXPECT_TRUE(fs::exists(file)) << "an upload's target is no local path";
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
    EXPECT_EQ(Cell(0, Column::To), path);
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

TEST_F(StatusCommands, OfManyThoseThatAllowIt) {
  const TaskPointer running = AddTask(State::Queued, 1, 2);
  const TaskPointer failed = AddTask(State::Failed, 1, 2);
  const TaskPointer paused = AddTask(State::Stopped, 1, 2);
  const TaskPointer folder = AddTask(State::Finished, 1, 2, true);
  Select({0, 1, 3});
  EXPECT_EQ(Offered(), "pause resume redo delete openFile openFolder moveFile copyPath ");
  Select({0, 1});
  EXPECT_EQ(Offered(), "pause resume redo delete openFolder copyPath ");
  Trigger(u"pause"_qs);
  EXPECT_EQ(running->record->state, State::Stopped);
  EXPECT_EQ(failed->record->state, State::Failed);
  Trigger(u"resumeAllFailed"_qs);
  EXPECT_EQ(failed->record->state, State::Queued);
  EXPECT_EQ(paused->record->state, State::Stopped);

  Select({1, 3});
  Trigger(u"openFile"_qs);
  EXPECT_EQ(opened_, Log{"file " + folder->record->LocalPath()});
  Trigger(u"delete"_qs);
  EXPECT_THAT(person_.seen, ElementsAre(HasSubstr("Delete 2 transfers?")));
  EXPECT_EQ(Rows(), 2);
}

TEST_F(StatusCommands, TheKeyboardReachesThemAll) {
  window_.BringForward();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
  AddTask(State::Finished);
  const TaskPointer task = AddTask(State::Queued, 1, 2);
  Select({0});
  QTest::keyClick(list_, Qt::Key_Return);
  EXPECT_EQ(opened_, Log{"file " + disk_.File("file1")});
  QTest::keyClick(list_, Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(list_->selectionModel()->selectedRows().size(), 2);
  list_->SelectRow(1);
  task->BeginRun();
  const auto menu = [this] { return list_->findChild<QMenu*>(u"transferListMenu"_qs); };
  QTest::keyClick(list_, Qt::Key_F10, Qt::ShiftModifier);
  ASSERT_TRUE(menu() != nullptr && menu()->isVisible());
  EXPECT_EQ(Offered(), "pause redo delete openFolder copyPath ");
  QTest::keyClick(menu(), Qt::Key_P);
  EXPECT_EQ(task->record->state, State::Stopped);
  task->EndRun();
  person_.answer = QMessageBox::Ok;
  QTest::keyClick(list_, Qt::Key_Delete);
  EXPECT_EQ(Rows(), 1);

  list_->SelectRow(-1);
  EXPECT_EQ(Offered(), "");
  EXPECT_TRUE(window_.findChild<QAction*>(u"clearFinished"_qs)->isEnabled());
  list_->SelectRow(0);
  Q_EMIT list_->doubleClicked(list_->CellAt(0, 2));
  EXPECT_EQ(opened_.size(), 2U);
}

}  // namespace
}  // namespace updown::test
