#include <QTest>

#include "service/result_codes.h"
#include "tests/transfers/window_world.h"

namespace updown::test {
namespace {

using StatusRows = WindowWorld;

TEST_F(StatusRows, ShowsAnAnnouncedTask) {
  const TaskPointer task = AddTask(State::Queued, 5000, 10000);
  EXPECT_EQ(Cell(0, Column::SourceEnd), "/pkg/file1");
  EXPECT_EQ(Cell(0, Column::TargetEnd), disk_.File("file1"));
  EXPECT_EQ(Course(0), "Waiting|||");
  EXPECT_EQ(task->record->statistics.startBytes, 5000U);

  const TaskPointer upload =
      tasks_.store.AddDownload({"x", "/remote", "server", 80}, "/local", true);
  upload->record->direction = 1;
  window_.AddRow(upload->id);
  EXPECT_EQ(Cell(1, Column::SourceEnd), "/local");
  EXPECT_EQ(Cell(1, Column::TargetEnd), "/remote");
}

TEST_F(StatusRows, FollowsATransferToItsEnd) {
  const TaskPointer task = AddTask(State::Queued, 0, 4096 * 10);
  window_.ShowStarted(task->id);
  EXPECT_EQ(Course(0), "Processing ...|||");

  ticks_.now += 1000;
  task->record->doneBytes = 4096;
  window_.ShowBlock(task->id);
  EXPECT_EQ(Course(0), "4 KB||4.00 KB/s|00 : 00 : 09 ");

  ticks_.now += 1000;
  task->record->doneBytes = 4096 * 10;
  task->record->state = State::Finished;
  // A late start notice finds the state as it is.
  for (const bool late : {false, true}) {
    late ? window_.ShowStarted(task->id) : EndTask(*task, 0);
    EXPECT_EQ(Course(0), "40 KB|Completed|20.00 KB/s|");
  }
}

TEST_F(StatusRows, TellsOfTransfersWithoutARateOrASize) {
  const TaskPointer empty = AddTask(State::Finished);
  ticks_.now += 50;
  EndTask(*empty, 0);
  EXPECT_EQ(Course(0), "0 KB|Completed|N/A|");
  const TaskPointer stalled = AddTask(State::Queued, 0, 8000);
  const TaskPointer unknown = AddTask(State::Queued);
  const TaskPointer folder = AddTask(State::Queued, 2048, 2048, true);
  folder->childRecord->doneBytes = 1024;
  ticks_.now += 1000;
  for (const TaskPointer& task : {stalled, unknown, folder}) {
    window_.ShowBlock(task->id);
  }
  EXPECT_EQ(Course(1), "0 KB||0 B/s|");
  EXPECT_EQ(Course(2), "0 KB|||00 : 00 : 00 ");
  EXPECT_EQ(Course(3), "3 KB|N/A|1.00 KB/s|N/A");
}

TEST_F(StatusRows, ShowsACodeUnlessTheTaskStoppedOrFinished) {
  const struct {
    State state;
    int code;
    std::string transferred;
    int systemError = 0;
  } cases[] = {
      {State::Failed, result::kConnection, "Network error. Please check your network connection."},
      {State::Failed, -result::kInterrupted, "Network session interrupted. Please try again."},
      {State::Failed, result::kConnection, "The service did not answer in time.", ETIMEDOUT},
      {State::Failed, result::kFileWrite, "There is not enough room on the disk.", ENOSPC},
      {State::Failed, result::kFileWrite, "Failed to write to file.", EIO},
      {State::Failed, result::kNoSuchRemoteFile, "The file is not on the service."},
      {State::Failed, result::kService8210, " "},
      {State::Failed, result::kNotDecodable, "Unknown error."},
      {State::Queued, -1, "Unknown error."},
      {State::Stopped, result::kConnection, "1 KB"},
      {State::Finished, result::kConnection, "1 KB"},
  };
  for (const auto& c : cases) {
    const TaskPointer task = AddTask(c.state, 1024, 2048);
    window_.ShowEnded(task->id, {c.code, c.systemError, "/a <path>"});
    const QModelIndex cell =
        list_->model()->index(Rows() - 1, static_cast<int>(Column::Transferred));
    EXPECT_EQ(ToUtf8(cell.data().toString()), c.transferred) << c.code;
    EXPECT_EQ(cell.data(Qt::ToolTipRole).toString().contains(u"<br>/a &lt;path&gt;<br>"_qs),
              c.state == State::Failed);
  }
}

TEST_F(StatusRows, ARestoredFailureTellsItsReason) {
  const TaskPointer task = tasks_.store.AddDownload({"x", "/x", {}}, "/local/x", true);
  task->record->state = State::Failed;
  task->record->resultCode = result::WithoutSign(result::kAuthentication);
  window_.AddRow(task->id);
  EXPECT_EQ(Cell(0, Column::Transferred),
            "Authentication failed, please correct your user name and password.");
}

TEST_F(StatusRows, FindsRowsAfterARemovalAbove) {
  const TaskPointer first = AddTask(State::Stopped);
  const TaskPointer second = AddTask(State::Queued, 0, 9000);
  Choose(0, u"delete"_qs);
  second->record->doneBytes = 3000;
  window_.ShowBlock(second->id);
  EXPECT_EQ(Rows(), 1);
  EXPECT_EQ(Cell(0, Column::Transferred), "2 KB");
  // The number of the first record is free again and goes to a new task, its name does not.
  const TaskPointer third = AddTask(State::Queued, 7000, 9000);
  EXPECT_EQ(third->record->recordId, first->record->recordId);
  window_.ShowBlock(third->id);
  EXPECT_EQ(Cell(1, Column::Transferred), "6 KB");
}

TEST_F(StatusRows, LaysTheWindowOutAndHidesIt) {
  window_.show();
  AddTask(State::Queued, 3333, 9999);
  const QModelIndex bar = list_->model()->index(0, static_cast<int>(Column::Progress));
  EXPECT_EQ(bar.data(Qt::AccessibleTextRole).toString(), u"33.33%"_qs);
  window_.resize(10, 10);
  EXPECT_EQ(window_.size(), QSize(280, 250));
  EXPECT_EQ(list_->size(), window_.size());

  QTest::keyClick(list_, Qt::Key_Return);
  EXPECT_TRUE(window_.isVisible());
  QTest::keyClick(list_, Qt::Key_Escape);
  EXPECT_FALSE(window_.isVisible());
  window_.show();
  window_.close();
  EXPECT_FALSE(window_.isVisible());
  EXPECT_EQ(Rows(), 1);
}

}  // namespace
}  // namespace updown::test
