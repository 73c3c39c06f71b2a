#include "widgets/link_delegate.h"

#include <gtest/gtest.h>

#include <QMouseEvent>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>

#include "widgets/row_list_view.h"

namespace updown {
namespace {

constexpr int kSave = 1;

class LinkDelegateTest : public ::testing::Test {
 protected:
  LinkDelegateTest() {
    for (int row = 0; row < 40; ++row) {
      auto* save = new QStandardItem(u"Save"_qs);
      save->setData(true, kLinkRole);
      model_.appendRow({new QStandardItem(u"file"_qs), save});
    }
    list_.setModel(&model_);
    list_.setColumnWidth(kSave, 150);
    list_.resize(400, 200);
    list_.show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&list_));
  }

  QModelIndex Link(int row) const { return model_.index(row, kSave); }
  QPoint Middle(int row) const { return links_->LinkRect(Link(row)).center(); }
  void Move(const QPoint& point) {
    QMouseEvent event(QEvent::MouseMove, point, list_.viewport()->mapToGlobal(point), Qt::NoButton,
                      Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(list_.viewport(), &event);
  }
  // Row of the link that shows the hover; -1 without one.
  int Hovered() {
    list_.grab();
    const bool hand = list_.viewport()->cursor().shape() == Qt::PointingHandCursor;
    EXPECT_EQ(hand, links_->HoveredLink().isValid());
    return links_->HoveredLink().row();
  }

  QStandardItemModel model_;
  RowListView list_{nullptr};
  LinkDelegate* links_ = new LinkDelegate(&list_);
};

TEST_F(LinkDelegateTest, HoverIsWhereTheMouseIsOverTheText) {
  Move(Middle(0));
  EXPECT_EQ(Hovered(), 0);
  Move(QPoint(links_->LinkRect(Link(0)).right() + 9, Middle(0).y()));
  EXPECT_EQ(Hovered(), -1);
  Move(Middle(0));
  list_.verticalScrollBar()->setValue(2);
  EXPECT_EQ(Hovered(), 2);
  model_.removeRows(0, 3);
  EXPECT_NE(Hovered(), -1);
  model_.setData(links_->HoveredLink(), false, kLinkRole);
  EXPECT_EQ(Hovered(), -1);
  list_.verticalScrollBar()->setValue(0);
  Move(Middle(0));
  QEvent leave(QEvent::Leave);
  QCoreApplication::sendEvent(list_.viewport(), &leave);
  EXPECT_EQ(Hovered(), -1);
}

TEST_F(LinkDelegateTest, AClickIsOneActivationOfTheSelectedRow) {
  QList<int> rows;
  QObject::connect(links_, &LinkDelegate::Activated, &list_, [&](const QModelIndex& index) {
    EXPECT_EQ(list_.SelectedRow(), index.row());
    rows << index.row();
  });
  const QSignalSpy doubled(&list_, &QAbstractItemView::doubleClicked);
  QTest::mouseClick(list_.viewport(), Qt::LeftButton, {}, Middle(1));
  QTest::mouseClick(list_.viewport(), Qt::RightButton, {}, Middle(0));
  EXPECT_EQ(rows, QList<int>{1});
  QTest::mouseClick(list_.viewport(), Qt::LeftButton, {}, Middle(3));
  QTest::mouseDClick(list_.viewport(), Qt::LeftButton, {}, Middle(3));
  EXPECT_LE(rows.size(), 3);
  EXPECT_EQ(doubled.count(), 0);
}

}  // namespace
}  // namespace updown
