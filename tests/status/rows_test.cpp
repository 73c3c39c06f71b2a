#include <QHeaderView>
#include <QTest>

#include "resources/string_id.h"
#include "service/result_codes.h"
#include "tests/status/window_world.h"

namespace updown::test {
namespace {

using Column = StatusColumn;
using State = TransferState;

class StatusRows : public WindowWorld {
 protected:
  void TaskState(const TransferTask& task, int code) {
    Send(frame_message::kTaskState, task.id, code);
  }
  // The four cells that tell of the transfer's course.
  std::string Course(int row) {
    return Cell(row, Column::Transferred) + "|" + Cell(row, Column::Progress) + "|" +
           Cell(row, Column::Rate) + "|" + Cell(row, Column::Remaining);
  }
};

TEST_F(StatusRows, ShowsAnAnnouncedTask) {
  EXPECT_EQ(frame_.restores, 1);
  const TaskPointer task = AddTask(State::Queued, 5000, 10000);
  EXPECT_EQ(Cell(0, Column::SourceEnd), "/pkg/file1");
  EXPECT_EQ(Cell(0, Column::TargetEnd), disk_.File("file1"));
  EXPECT_EQ(Course(0), "4 KB|||");
  EXPECT_EQ(task->record->statistics.startBytes, 5000U);

  const TaskPointer upload = frame_.Tasks().CreateTask();
  upload->record->direction = 1;
  upload->record->SetPaths({"/remote", "/local"});
  Send(frame_message::kTaskAdded, upload->id, 0);
  EXPECT_EQ(Cell(1, Column::SourceEnd), "/local");
  EXPECT_EQ(Cell(1, Column::TargetEnd), "/remote");
}

TEST_F(StatusRows, DropsMessagesAboutUnknownTasks) {
  const TaskPointer hidden = frame_.Tasks().CreateTask();
  Send(frame_message::kTaskAdded, 0, 0);
  Send(frame_message::kTaskAdded, hidden->id + 1000, 0);
  TaskState(*hidden, -8194);
  BlockDone(*hidden);
  EXPECT_EQ(Rows(), 0);
  EXPECT_EQ(hidden->lastResult, 0);
}

TEST_F(StatusRows, FollowsATransferToItsEnd) {
  const TaskPointer task = AddTask(State::Queued);
  TaskState(*task, static_cast<int>(StringId::Processing));
  EXPECT_EQ(Course(0), "Processing ...|||");
  EXPECT_EQ(task->lastResult, 0);

  ticks_.now += 1000;
  task->record->totalBytes = 4096 * 10;
  task->record->doneBytes = 4096;
  BlockDone(*task);
  EXPECT_EQ(Course(0), "4 KB||4.00 KB/s|00 : 00 : 09 ");

  ticks_.now += 1000;
  task->record->doneBytes = 4096 * 10;
  task->record->state = State::Finished;
  TaskState(*task, 0);
  EXPECT_EQ(Course(0), "40 KB|Completed|20.00 KB/s|");
  // A late start notice finds the state as it is.
  TaskState(*task, static_cast<int>(StringId::Processing));
  EXPECT_EQ(Course(0), "40 KB|Completed|20.00 KB/s|");

  const TaskPointer empty = AddTask(State::Finished);
  ticks_.now += 50;
  TaskState(*empty, 0);
  EXPECT_EQ(Course(1), "0 KB|Completed|N/A|");
}

TEST_F(StatusRows, ShowsACodeUnlessTheTaskStoppedOrFinished) {
  const std::tuple<State, int, std::string> cases[] = {
      {State::Failed, result::kConnection, "Network error. Please check your network connection."},
      {State::Failed, -result::kInterrupted, "Network session interrupted. Please try again."},
      {State::Failed, result::kNoSuchRemoteFile, "Failed to open file."},
      {State::Failed, result::kService8210, " "},
      {State::Failed, result::kNotDecodable, "Unknown error."},
      {State::Queued, -1, "Unknown error."},
      {State::Stopped, result::kConnection, "1 KB"},
      {State::Finished, result::kConnection, "1 KB"},
  };
  for (const auto& [state, code, transferred] : cases) {
    const TaskPointer task = AddTask(state, 1024, 2048);
    ticks_.now += 1;
    TaskState(*task, code);
    EXPECT_EQ(Cell(Rows() - 1, Column::Transferred), transferred) << code;
    EXPECT_EQ(task->lastResult, std::abs(code));
  }
}

TEST_F(StatusRows, EndsAnUpdateWithinTheSameMillisecond) {
  for (const State state : {State::Stopped, State::Finished}) {
    const TaskPointer task = AddTask(state, 1024, 2048);
    TaskState(*task, result::kConnection);
    EXPECT_EQ(task->lastResult, 0);
    EXPECT_EQ(Cell(Rows() - 1, Column::Rate), "");
  }
  const TaskPointer failed = AddTask(State::Failed);
  TaskState(*failed, result::kConnection);
  EXPECT_EQ(failed->lastResult, 8194);
}

TEST_F(StatusRows, KeepsRemainingTimeWhileNothingComes) {
  const TaskPointer task = AddTask(State::Queued, 0, 8000);
  ticks_.now += 1000;
  BlockDone(*task);
  EXPECT_EQ(Course(0), "0 KB||0 B/s|");
  const TaskPointer unknown = AddTask(State::Queued);
  ticks_.now += 1000;
  BlockDone(*unknown);
  EXPECT_EQ(Course(1), "0 KB|||00 : 00 : 00 ");
}

TEST_F(StatusRows, CountsAFolderWithTheFileInFlight) {
  const TaskPointer task = AddTask(State::Queued, 2048, 2048, true);
  task->childRecord->doneBytes = 1024;
  ticks_.now += 1000;
  BlockDone(*task);
  EXPECT_EQ(Course(0), "3 KB|N/A|1.00 KB/s|N/A");
}

TEST_F(StatusRows, FindsRowsAfterARemovalAbove) {
  const TaskPointer first = AddTask(State::Stopped);
  const TaskPointer second = AddTask(State::Queued, 0, 9000);
  Choose(0, u"delete"_qs);
  second->record->doneBytes = 3000;
  BlockDone(*second);
  EXPECT_EQ(Rows(), 1);
  EXPECT_EQ(Cell(0, Column::Transferred), "2 KB");
  // The number of the first record is free again and goes to a new task.
  const TaskPointer third = AddTask(State::Queued, 7000, 9000);
  EXPECT_EQ(third->record->recordId, first->record->recordId);
  BlockDone(*third);
  EXPECT_EQ(Cell(1, Column::Transferred), "6 KB");
}

TEST_F(StatusRows, LaysTheWindowOut) {
  window_.show();
  const QHeaderView* const header = list_->header();
  EXPECT_TRUE(header->sectionsMovable());
  EXPECT_EQ(header->sectionSize(0), 150);
  EXPECT_EQ(list_->model()->headerData(5, Qt::Horizontal).toString(), u"Time Remaining"_qs);
  AddTask(State::Queued, 3333, 9999);
  const QModelIndex bar = list_->model()->index(0, static_cast<int>(Column::Progress));
  EXPECT_EQ(bar.data(Qt::AccessibleTextRole).toString(), u"33.33%"_qs);
  EXPECT_FALSE(list_->accessibleName().isEmpty());
  window_.resize(10, 10);
  EXPECT_EQ(window_.size(), QSize(280, 250));
  EXPECT_EQ(list_->size(), window_.size());
}

TEST_F(StatusRows, HidesAndKeepsItsRows) {
  AddTask(State::Queued);
  window_.show();
  QTest::keyClick(list_, Qt::Key_Escape);
  EXPECT_FALSE(window_.isVisible());
  window_.show();
  QTest::keyClick(list_, Qt::Key_Return);
  EXPECT_TRUE(window_.isVisible());
  window_.close();
  EXPECT_FALSE(window_.isVisible());
  EXPECT_EQ(Rows(), 1);
  EXPECT_TRUE(IsWindow(window_.Handle()));
}

}  // namespace
}  // namespace updown::test
