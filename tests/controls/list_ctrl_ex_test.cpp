#include "controls/list_ctrl_ex.h"

#include <gtest/gtest.h>

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>

namespace updown {
namespace {

constexpr int kBars = 3;

class ListCtrlExTest : public testing::Test {
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

  TransferTask& Add(std::uint32_t total, std::uint32_t done, TransferState state) {
    auto task = std::make_shared<TransferTask>();
    task->id = static_cast<TaskId>(tasks_.size()) + 1;
    task->record = std::make_shared<TransferRecord>();
    task->record->totalBytes = total;
    task->record->doneBytes = done;
    task->record->state = state;
    QList<QStandardItem*> row{new QStandardItem, new QStandardItem, new QStandardItem,
                              new QStandardItem(QStringLiteral("own"))};
    row[0]->setData(static_cast<int>(task->id));
    tasks_[static_cast<int>(task->id)] = task;
    model_.appendRow(row);
    return *task;
  }

  QList<CProgressPainter*> Bars() {
    QCoreApplication::processEvents();
    auto bars = list_.findChildren<CProgressPainter*>();
    std::sort(bars.begin(), bars.end(), [](auto* a, auto* b) { return a->y() < b->y(); });
    return bars;
  }
  QString BarsCell(int row) const { return model_.item(row, kBars)->text(); }

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
  EXPECT_TRUE(bars[0]->Waiting());
  EXPECT_TRUE(bars[0]->Blinking());
  EXPECT_FALSE(bars[1]->Waiting());
  EXPECT_EQ(bars[1]->Text(), QStringLiteral("25.00%"));
  const QRect row = list_.visualRect(model_.index(1, 0));
  EXPECT_EQ(bars[1]->y(), row.y() + row.height() / 4 - 2);
  EXPECT_EQ(bars[1]->x(), list_.columnViewportPosition(kBars));
  EXPECT_EQ(BarsCell(2), QStringLiteral("own"));
  EXPECT_EQ(BarsCell(3), QStringLiteral("N/A"));

  list_.header()->resizeSection(0, 33);
  list_.header()->moveSection(kBars, 0);
  EXPECT_EQ(Bars()[1]->x(), 0);
}

TEST_F(ListCtrlExTest, BarsKeepTheirIdentityAndFollowTheData) {
  Add(1000, 0, TransferState::Finished);
  TransferTask& task = Add(0, 0, TransferState::Queued);
  CProgressPainter* const bar = Bars().value(0);
  ASSERT_NE(bar, nullptr);
  list_.resize(500, 220);
  EXPECT_EQ(Bars(), QList<CProgressPainter*>{bar});
  model_.removeRow(0);
  EXPECT_EQ(Bars(), QList<CProgressPainter*>{bar});

  task.record->totalBytes = 1000;
  task.record->doneBytes = 500;
  model_.item(0, 1)->setText(QStringLiteral("changed"));
  EXPECT_EQ(Bars(), QList<CProgressPainter*>{bar});
  EXPECT_EQ(bar->Text(), QStringLiteral("50.00%"));
  EXPECT_FALSE(bar->Blinking());

  task.record->state = TransferState::Failed;
  model_.item(0, 1)->setText(QStringLiteral("failed"));
  EXPECT_TRUE(Bars().isEmpty());
}

TEST_F(ListCtrlExTest, OnlyRowsInViewHaveBars) {
  for (int i = 0; i < 500; ++i) {
    Add(1000, static_cast<std::uint32_t>(i), TransferState::Queued);
  }
  EXPECT_LT(Bars().size(), 20);
  list_.scrollTo(model_.index(499, 0));
  const auto bars = Bars();
  EXPECT_LT(bars.size(), 20);
  EXPECT_EQ(bars.back()->Text(), QStringLiteral("49.90%"));
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

TEST_F(ListCtrlExTest, HintStandsWhileThereAreNoRows) {
  list_.EnableHint(true);
  const auto shown = [this] {
    QCoreApplication::processEvents();
    const auto* hint = list_.findChild<CTransparentStatic*>(QStringLiteral("hintText"));
    return hint != nullptr && hint->isVisible();
  };
  EXPECT_TRUE(shown());
  Add(1, 1, TransferState::Finished);
  EXPECT_FALSE(shown());
  model_.removeRows(0, 1);
  EXPECT_TRUE(shown());
  list_.EnableHint(false);
  EXPECT_FALSE(shown());
}

TEST_F(ListCtrlExTest, DeleteKeyAsksForTasksThatDoNotRun) {
  Add(9, 0, TransferState::Queued);
  Add(9, 0, TransferState::Stopped);
  Add(9, 0, TransferState::Finished);
  Add(9, 0, TransferState::Failed);
  const QSignalSpy requests(&list_, &CListCtrlEx::DeleteRequested);
  QTest::keyClick(&list_, Qt::Key_Delete);
  EXPECT_EQ(requests.count(), 0);
  const int expected[] = {0, 1, 2, 3};
  for (int row = 0; row < 4; ++row) {
    list_.SelectRow(row);
    EXPECT_EQ(list_.SelectedRow(), row);
    QTest::keyClick(&list_, Qt::Key_Delete);
    QTest::keyClick(&list_, Qt::Key_Backspace);
    EXPECT_EQ(requests.count(), expected[row]) << row;
  }
}

TEST_F(ListCtrlExTest, RowMenuOpensByMouseAndKeyboard) {
  Add(9, 0, TransferState::Stopped);
  Add(9, 0, TransferState::Stopped);
  QSignalSpy menus(&list_, &CListCtrlEx::RowMenuRequested);
  const auto byMouse = [this](const QPoint& point) {
    QContextMenuEvent event(QContextMenuEvent::Mouse, point, list_.viewport()->mapToGlobal(point));
    QCoreApplication::sendEvent(list_.viewport(), &event);
  };
  QTest::keyClick(&list_, Qt::Key_F10, Qt::ShiftModifier);
  byMouse(QPoint(5, list_.viewport()->height() - 2));
  EXPECT_EQ(menus.count(), 0);
  byMouse(list_.visualRect(model_.index(1, 2)).center());
  ASSERT_EQ(menus.count(), 1);
  EXPECT_EQ(menus[0][0].toInt(), 1);
  EXPECT_EQ(list_.SelectedRow(), 1);

  QTest::keyClick(&list_, Qt::Key_F10, Qt::ShiftModifier);
  QContextMenuEvent byKey(QContextMenuEvent::Keyboard, QPoint(), QPoint());
  QCoreApplication::sendEvent(&list_, &byKey);
  ASSERT_EQ(menus.count(), 3);
  const QPoint inList = list_.viewport()->mapFromGlobal(menus[2][1].toPoint());
  EXPECT_TRUE(list_.visualRect(model_.index(1, 0)).contains(inList));

  QTest::mouseClick(list_.viewport(), Qt::LeftButton, {},
                    QPoint(5, list_.viewport()->height() - 2));
  EXPECT_EQ(list_.SelectedRow(), -1);
}

}  // namespace
}  // namespace updown
