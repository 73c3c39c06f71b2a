#include "widgets/row_list_view.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QMenu>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>
#include <QToolTip>

namespace updown {
namespace {

class RowListViewTest : public ::testing::Test {
 protected:
  RowListViewTest() {
    list_.setObjectName(u"files"_qs);
    for (int row = 0; row < 4; ++row) {
      model_.appendRow({new QStandardItem(u"row %1"_qs.arg(row)), new QStandardItem(u"<b>"_qs)});
    }
    list_.setModel(&model_);
    list_.resize(400, 200);
    list_.show();
  }
  ~RowListViewTest() override { QToolTip::hideText(); }

  QPoint Middle(int row, int column = 0) const {
    return list_.visualRect(model_.index(row, column)).center();
  }
  QPoint BelowTheRows() const { return {5, list_.viewport()->height() - 2}; }
  // How many commands the menu offers that this opens.
  qsizetype Menu(const std::function<void()>& open) {
    open();
    const std::unique_ptr<QMenu> menu(list_.findChild<QMenu*>(u"filesMenu"_qs));
    return menu ? menu->actions().size() : 0;
  }
  void RightClick(const QPoint& point) {
    QTest::mouseClick(list_.viewport(), Qt::RightButton, {}, point);
    QContextMenuEvent event(QContextMenuEvent::Mouse, point, list_.viewport()->mapToGlobal(point));
    QCoreApplication::sendEvent(list_.viewport(), &event);
  }
  QString TipAt(const QPoint& point) {
    QToolTip::hideText();
    QHelpEvent event(QEvent::ToolTip, point, list_.viewport()->mapToGlobal(point));
    QCoreApplication::sendEvent(list_.viewport(), &event);
    return event.isAccepted() ? QToolTip::text() : QString();
  }

  QStandardItemModel model_;
  RowListView list_{nullptr};
};

TEST_F(RowListViewTest, ItsActionsAreTheMenuByMouseAndByKeys) {
  QAction save(u"Save"_qs);
  list_.addAction(&save);
  const QSignalSpy told(&list_, &RowListView::MenuAboutToOpen);
  EXPECT_EQ(Menu([&] { RightClick(Middle(2)); }), 1);
  EXPECT_EQ(list_.SelectedRow(), 2);
  EXPECT_EQ(Menu([&] { QTest::keyClick(&list_, Qt::Key_F10, Qt::ShiftModifier); }), 1);
  EXPECT_EQ(Menu([&] { RightClick(BelowTheRows()); }), 1);
  EXPECT_EQ(list_.SelectedRow(), -1);
  EXPECT_EQ(told.count(), 3);
}

TEST_F(RowListViewTest, SeveralRowsStaySelectedUnderTheMenu) {
  list_.setSelectionMode(QAbstractItemView::ExtendedSelection);
  list_.SelectRow(0);
  QTest::keyClick(&list_, Qt::Key_Down, Qt::ShiftModifier);
  for (const int row : {1, 2}) {
    RightClick(Middle(row));
    EXPECT_EQ(list_.selectionModel()->selectedRows().size(), row == 1 ? 2 : 1);
  }
}

TEST_F(RowListViewTest, ACutCellTellsItselfWholeUnlessTheModelKnowsMore) {
  const QString name(300, u'n');
  list_.setColumnWidth(0, 150);
  EXPECT_EQ(TipAt(Middle(0)), QString());
  model_.item(0)->setText(name);
  EXPECT_EQ(TipAt(Middle(0)).count(u'n'), 300);
  EXPECT_TRUE(TipAt(Middle(0)).contains(u"<br>"_qs));
  model_.item(0)->setToolTip(u"Type:<i>a</i>\r\nSize:2,000"_qs);
  EXPECT_TRUE(TipAt(Middle(0)).contains(u"Type:&lt;i&gt;a&lt;/i&gt;<br>Size:2,000"_qs));
  EXPECT_EQ(TipAt(Middle(0, 1)), QString());
  EXPECT_EQ(TipAt(BelowTheRows()), QString());
}

// Else the arrow key would step over the row that has the focus, or could not select it at all.
TEST_F(RowListViewTest, FirstArrowKeySelectsTheCurrentRow) {
  list_.selectionModel()->setCurrentIndex(model_.index(1, 0), QItemSelectionModel::Clear);
  for (const int row : {1, 2}) {
    QTest::keyClick(&list_, Qt::Key_Down);
    EXPECT_EQ(list_.SelectedRow(), row);
  }
}

}  // namespace
}  // namespace updown
