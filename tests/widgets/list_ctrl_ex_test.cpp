#include "widgets/list_ctrl_ex.h"

#include <gtest/gtest.h>

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>

namespace updown {
namespace {

constexpr int kBars = 3;

class ListCtrlExTest : public ::testing::Test {
 protected:
  ListCtrlExTest() {
    model_.setColumnCount(4);
    list_.setModel(&model_);
    list_.SetTaskOfRow(
        [this](int row) { return tasks_.value(model_.item(row, 0)->data().toInt()); });
    list_.SetProgressColumn(kBars);
    list_.resize(600, 200);
    list_.show();
  }

  TransferRecord& Add(std::uint32_t total, std::uint32_t done, TransferState state) {
    auto task = std::make_shared<TransferTask>();
    const int number = static_cast<int>(tasks_.size()) + 1;
    task->id = static_cast<TaskId>(number);
    task->record = std::make_shared<TransferRecord>();
    task->record->totalBytes = total;
    task->record->doneBytes = done;
    task->record->state = state;
    tasks_[number] = task;
    model_.appendRow(
        {new QStandardItem, new QStandardItem, new QStandardItem, new QStandardItem(u"own"_qs)});
    model_.item(model_.rowCount() - 1, 0)->setData(number);
    return *task->record;
  }

  QList<CProgressPainter*> Bars() {
    QCoreApplication::processEvents();
    auto bars = list_.findChildren<CProgressPainter*>();
    std::sort(bars.begin(), bars.end(), [](auto* a, auto* b) { return a->y() < b->y(); });
    return bars;
  }
  void RightClick(const QPoint& point) {
    QContextMenuEvent event(QContextMenuEvent::Mouse, point, list_.viewport()->mapToGlobal(point));
    QCoreApplication::sendEvent(list_.viewport(), &event);
  }
  QPoint BelowTheRows() const { return {5, list_.viewport()->height() - 2}; }

  QStandardItemModel model_;
  QMap<int, TaskPointer> tasks_;
  CListCtrlEx list_;
};

TEST_F(ListCtrlExTest, BarsStandOverTheirCells) {
  Add(0, 0, TransferState::Queued);
  Add(1000, 250, TransferState::Stopped);
  Add(1000, 1000, TransferState::Finished);
  Add(0, 0, TransferState::Stopped);
  const auto bars = Bars();
  ASSERT_EQ(bars.size(), 2);
  EXPECT_TRUE(bars[0]->Blinking());
  EXPECT_FALSE(bars[1]->Waiting());
  EXPECT_EQ(bars[1]->Text(), u"25.00%"_qs);
  const QRect row = list_.visualRect(model_.index(1, 0));
  EXPECT_EQ(bars[1]->y(), row.y() + row.height() / 4 - 2);
  EXPECT_EQ(bars[1]->x(), list_.columnViewportPosition(kBars));
  EXPECT_EQ(model_.item(2, kBars)->text(), u"own"_qs);
  EXPECT_EQ(model_.item(3, kBars)->text(), u"N/A"_qs);
  list_.header()->moveSection(kBars, 0);
  EXPECT_EQ(Bars()[1]->x(), 0);
}

TEST_F(ListCtrlExTest, BarsKeepTheirIdentityAndFollowTheData) {
  Add(1000, 0, TransferState::Finished);
  TransferRecord& record = Add(0, 0, TransferState::Queued);
  const auto bars = Bars();
  ASSERT_EQ(bars.size(), 1);
  list_.resize(500, 220);
  model_.removeRow(0);
  record.totalBytes = 1000;
  record.doneBytes = 500;
  model_.item(0, 1)->setText(u"changed"_qs);
  EXPECT_EQ(Bars(), bars);
  EXPECT_EQ(bars[0]->Text(), u"50.00%"_qs);
  EXPECT_FALSE(bars[0]->Blinking());
  record.state = TransferState::Failed;
  model_.item(0, 1)->setText(u"failed"_qs);
  EXPECT_TRUE(Bars().isEmpty());
}

TEST_F(ListCtrlExTest, OnlyRowsInViewHaveBars) {
  for (std::uint32_t done = 0; done < 500; ++done) {
    Add(1000, done, TransferState::Queued);
  }
  EXPECT_LT(Bars().size(), 20);
  list_.scrollTo(model_.index(499, 0));
  const auto bars = Bars();
  EXPECT_LT(bars.size(), 20);
  EXPECT_EQ(bars.back()->Text(), u"49.90%"_qs);
}

TEST_F(ListCtrlExTest, PaintingCausesNoFurtherPainting) {
  class PaintCounter : public QObject {
   public:
    int paints = 0;
    bool eventFilter(QObject* object, QEvent* event) override {
      paints += event->type() == QEvent::Paint ? 1 : 0;
      return QObject::eventFilter(object, event);
    }
  } counter;
  Add(1000, 250, TransferState::Stopped);
  Add(0, 0, TransferState::Stopped);
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&list_));
  ASSERT_EQ(Bars().size(), 1);
  list_.viewport()->installEventFilter(&counter);
  list_.viewport()->update();
  for (int i = 0; i < 50; ++i) {
    QCoreApplication::processEvents();
  }
  EXPECT_EQ(counter.paints, 1);
}

TEST_F(ListCtrlExTest, DeleteKeyAsksForTasksInEveryState) {
  using State = TransferState;
  const QSignalSpy requests(&list_, &CListCtrlEx::DeleteRequested);
  QTest::keyClick(&list_, Qt::Key_Delete);  // without a row
  int expected = 0;
  for (const State state : {State::Queued, State::Stopped, State::Finished, State::Failed}) {
    Add(9, 0, state);
    list_.SelectRow(model_.rowCount() - 1);
    QTest::keyClick(&list_, Qt::Key_Delete);
    QTest::keyClick(&list_, Qt::Key_Backspace);
    EXPECT_EQ(requests.count(), ++expected);
  }
}

TEST_F(ListCtrlExTest, RowMenuOpensByMouseAndKeyboard) {
  Add(9, 0, TransferState::Stopped);
  Add(9, 0, TransferState::Stopped);
  QSignalSpy menus(&list_, &CListCtrlEx::RowMenuRequested);
  QTest::keyClick(&list_, Qt::Key_F10, Qt::ShiftModifier);
  RightClick(BelowTheRows());
  EXPECT_EQ(menus.count(), 0);
  RightClick(list_.visualRect(model_.index(1, 2)).center());
  ASSERT_EQ(menus.count(), 1);
  EXPECT_EQ(menus[0][0].toInt(), 1);
  EXPECT_EQ(list_.SelectedRow(), 1);

  QTest::keyClick(&list_, Qt::Key_F10, Qt::ShiftModifier);
  QContextMenuEvent byKey(QContextMenuEvent::Keyboard, QPoint(), QPoint());
  QCoreApplication::sendEvent(&list_, &byKey);
  ASSERT_EQ(menus.count(), 3);
  const QPoint inList = list_.viewport()->mapFromGlobal(menus[2][1].toPoint());
  EXPECT_TRUE(list_.visualRect(model_.index(1, 0)).contains(inList));
  QTest::mouseClick(list_.viewport(), Qt::LeftButton, {}, BelowTheRows());
  EXPECT_EQ(list_.SelectedRow(), -1);
}

}  // namespace
}  // namespace updown
