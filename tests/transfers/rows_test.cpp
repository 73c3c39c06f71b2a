#include <QHeaderView>
#include <QLabel>
#include <QMimeData>
#include <QTest>
#include <QTimerEvent>
#include <QUrl>

#include "service/result_codes.h"
#include "tests/transfers/window_world.h"
#include "widgets/progress_delegate.h"

namespace updown::test {
namespace {

using Transfers = WindowWorld;

TEST_F(Transfers, TellsEachStateInEachColumn) {
  const struct {
    State state;
    std::uint32_t done;
    std::uint32_t total;
    bool folder;
    const char* news;  // s: started, b: a block, w: connection lost, e: ended; a second before each
    const char* course;
  } cases[] = {
      {State::Queued, 5120, 10240, false, "", "5 KB of 10 KB|50.00%|||Waiting"},
      {State::Queued, 0, 0, false, "s", "0 KB||||Processing ..."},
      {State::Queued, 0, 40960, false, "sb",
       "4 KB of 40 KB|10.00%|4.00 KB/s|00 : 00 : 09 |Transferring"},
      {State::Queued, 0, 0, false, "b", "4 KB|N/A|4.00 KB/s||Transferring"},
      {State::Queued, 0, 40960, false, "sbw", "4 KB of 40 KB|10.00%|||Reconnecting …"},
      {State::Queued, 0, 40960, false, "sbwb",
       "8 KB of 40 KB|20.00%|3.60 KB/s|00 : 00 : 08 |Transferring"},
      {State::Queued, 0, 40960, false, "sbe", "4 KB of 40 KB|10.00%|||Waiting"},
      {State::Queued, 2048, 2048, true, "sb", "6 KB|N/A|4.00 KB/s||Transferring"},
      {State::Stopped, 0, 0, false, "", "0 KB|N/A|||Paused"},
      {State::Stopped, 5120, 10240, false, "sbe", "9 KB of 10 KB|90.00%|||Paused"},
      {State::Finished, 9, 9, false, "se", "9 B|100.00%|||Completed"},
  };
  for (const auto& c : cases) {
    const TaskPointer task = AddTask(c.state, c.done, c.total, c.folder);
    for (const char news : std::string(c.news)) {
      ticks_.now += 1000;
      if (news == 's') {
        window_.ShowStarted(task->id);
      } else if (news == 'b') {
        task->record->doneBytes += 4096;
        window_.ShowBlock(task->id);
      } else if (news == 'w') {
        window_.ShowWaiting(task->id);
      } else {
        EndTask(*task, 0);
      }
    }
    EXPECT_EQ(Course(Rows() - 1), c.course) << "case " << &c - cases;
  }
  const TaskPointer folder = AddTask(State::Queued, 0, 0, true);
  folder->WalkBegins();
  folder->FilesListed(8, 3 << 20);
  folder->FileIsThere(448 << 10);
  ticks_.now += 1000;
  window_.ShowBlock(folder->id);
  EXPECT_EQ(Course(Rows() - 1),
            "1 of 8 files, 448 KB of 3.00 MB|14.58%|448.00 KB/s|00 : 00 : 05 |Transferring");
}

TEST_F(Transfers, BlocksInQuickSuccessionShowTogether) {
  const TaskPointer task = AddTask(State::Queued, 0, 40960);
  const auto block = [&] {
    task->record->doneBytes += 4096;
    window_.ShowBlock(task->id);
  };
  ticks_.now += 1000;
  block();
  EXPECT_EQ(Cell(0, Column::Transferred), "4 KB of 40 KB");
  block();
  block();
  EXPECT_EQ(Cell(0, Column::Transferred), "4 KB of 40 KB");
  ticks_.now += 100;
  EXPECT_TRUE(QTest::qWaitFor([&] { return Cell(0, Column::Transferred) == "12 KB of 40 KB"; }));
  block();
  task->record->state = State::Finished;
  EndTask(*task, 0);
  EXPECT_EQ(Cell(0, Column::State), "Completed");
  EXPECT_TRUE(Tip(0).contains(u"B/s on average"_qs)) << ToUtf8(Tip(0));
}

TEST_F(Transfers, ARateGoesWhenNothingComesAnyMore) {
  const TaskPointer task = AddTask(State::Queued, 0, 40960);
  task->record->doneBytes = 4096;
  ticks_.now += 1000;
  window_.ShowBlock(task->id);
  for (const bool stalled : {false, true}) {
    ticks_.now += stalled ? 10000 : 14000;
    for (int id = 0; id < 1000; ++id) {  // one of them is that of the model's look
      QTimerEvent event(id);
      QCoreApplication::sendEvent(qobject_cast<QAbstractProxyModel*>(list_->model())->sourceModel(),
                                  &event);
    }
    EXPECT_EQ(Course(0), stalled ? "4 KB of 40 KB|10.00%|||Transferring"
                                 : "4 KB of 40 KB|10.00%|4.00 KB/s|00 : 00 : 09 |Transferring");
  }
}

TEST_F(Transfers, AFailureTellsItsReason) {
  const struct {
    int code;
    int systemError;
    std::string text;
  } cases[] = {
      {result::kConnection, 0, "Network error. Please check your network connection."},
      {result::kConnection, ETIMEDOUT, "The service did not answer in time."},
  };
  for (const auto& c : cases) {
    const TaskPointer task = AddTask(State::Failed, 1024, 2048);
    window_.ShowEnded(task->id, {c.code, c.systemError, "/a <path>"});
    EXPECT_EQ(Cell(Rows() - 1, Column::State), "Failed: " + c.text);
    EXPECT_TRUE(Tip(Rows() - 1).contains(u"\n/a <path>\n"_qs)) << "plain text";
  }
  const TaskPointer restored = tasks_.store.AddDownload({"x", "/x", {}}, "/local/x", true);
  restored->record->state = State::Failed;
  restored->record->resultCode = result::WithoutSign(result::kAuthentication);
  window_.AddRow(restored->id);
  EXPECT_EQ(Cell(Rows() - 1, Column::State),
            "Failed: Authentication failed, please correct your user name and password.");
}

TEST_F(Transfers, ManyGoAtOnceAndTheOthersGoOn) {
  for (int count = 0; count < 10; ++count) {
    AddTask(count % 2 == 0 ? State::Queued : State::Finished);
  }
  Select({2, 3, 8});
  const QPersistentModelIndex kept = list_->CellAt(8, 0);
  Trigger(u"clearFinished"_qs);
  EXPECT_EQ(Rows(), 5);
  EXPECT_EQ(kept.row(), 4);
  EXPECT_EQ(list_->selectionModel()->selectedRows().size(), 2);
  for (int row = 0; row < 5; ++row) {
    EXPECT_EQ(Cell(row, Column::Name), "file" + std::to_string(2 * row + 1));
  }
}

TEST_F(Transfers, SortByWhatTheyAreNotByTheirTexts) {
  // In the order of rising bytes; text would put "1000 KB" and "2.00 MB" before "9 KB".
  const std::uint32_t bytes[] = {9 << 10, 1000 << 10, 2 << 20, 10 << 20};
  const State states[] = {State::Queued, State::Finished, State::Stopped, State::Failed};
  for (const int at : {2, 0, 3, 1}) {
    AddTask(states[at], bytes[at], 20 << 20);
  }
  const auto order = [&](Column column) {
    list_->header()->setSortIndicator(static_cast<int>(column), Qt::AscendingOrder);
    std::string names;
    for (int row = 0; row < Rows(); ++row) {
      names += Cell(row, Column::Name).back();
    }
    return names;
  };
  EXPECT_EQ(order(Column::Name), "1234");
  EXPECT_EQ(order(Column::Transferred), "2413");
  EXPECT_EQ(order(Column::Progress), "2134") << "a finished one is whole";
  EXPECT_EQ(order(Column::State), "2134") << "waiting, paused, failed, finished";
  list_->header()->setSortIndicator(-1, Qt::AscendingOrder);
  EXPECT_EQ(Cell(0, Column::Name), "file1");
}

TEST_F(Transfers, TheLineBelowTellsAllAndFilesCanBeDraggedOut) {
  window_.BringForward();
  const TaskPointer moving = AddTask(State::Queued, 0, 40960);
  AddTask(State::Queued);
  AddTask(State::Failed);
  AddTask(State::Finished, 9, 9);
  ticks_.now += 1000;
  moving->record->doneBytes = 4096;
  window_.ShowBlock(moving->id);
  QCoreApplication::processEvents();
  EXPECT_EQ(window_.findChild<QLabel*>(u"transferTotals"_qs)->text(),
            u"4.00 KB/s in all – 1 transferring, 1 waiting, 1 failed"_qs);
  const QAbstractItemModel& model = *list_->model();
  for (int row = 0; row < 4; ++row) {
    EXPECT_EQ(model.flags(list_->CellAt(row, 0)).testFlag(Qt::ItemIsDragEnabled), row == 3);
  }
  const std::unique_ptr<QMimeData> data(model.mimeData({list_->CellAt(3, 0), list_->CellAt(3, 1)}));
  EXPECT_EQ(data->urls(), QList<QUrl>{QUrl::fromLocalFile(FromUtf8(disk_.File("file4")))});
}

TEST_F(Transfers, TheWindowHidesByKeys) {
  AddTask(State::Queued);
  for (const auto& [key, modifier] :
       {std::pair(Qt::Key_Escape, Qt::NoModifier), std::pair(Qt::Key_W, Qt::ControlModifier)}) {
    window_.BringForward();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
    QTest::keyClick(list_, key, modifier);
    EXPECT_FALSE(window_.isVisible());
  }
  EXPECT_EQ(Rows(), 1);
}

}  // namespace
}  // namespace updown::test
