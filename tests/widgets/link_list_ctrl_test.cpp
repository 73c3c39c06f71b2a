#include "widgets/link_list_ctrl.h"

#include <gtest/gtest.h>

#include <QHelpEvent>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>
#include <QToolTip>

namespace updown {
namespace {

constexpr int kLink = 1;

class LinkListCtrlTest : public ::testing::Test {
 protected:
  LinkListCtrlTest() {
    list_.setModel(&model_);
    model_.setHorizontalHeaderLabels({u"Name"_qs, u"Save"_qs});
    Fill();
    list_.setColumnWidth(0, 200);
    list_.setColumnWidth(kLink, 100);
    list_.resize(400, 200);
    list_.show();
  }
  ~LinkListCtrlTest() override { QToolTip::hideText(); }

  void Fill() {
    for (const QString& name : {u"file0"_qs, u"file1"_qs, u"file2"_qs}) {
      model_.appendRow({new QStandardItem(name), new QStandardItem(u"Save"_qs)});
    }
  }
  void Move(const QPoint& point) {
    QMouseEvent event(QEvent::MouseMove, point, list_.viewport()->mapToGlobal(point), Qt::NoButton,
                      Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(list_.viewport(), &event);
  }
  bool TipAt(const QPoint& point) {
    QHelpEvent event(QEvent::ToolTip, point, list_.viewport()->mapToGlobal(point));
    QCoreApplication::sendEvent(list_.viewport(), &event);
    return event.isAccepted();
  }
  QPoint Middle(int row, int column) const {
    return list_.visualRect(model_.index(row, column)).center();
  }
  QPoint Link(int row) const { return list_.LinkTextRect(row, kLink).center(); }

  QStandardItemModel model_;
  CLinkListCtrl list_;
};

TEST_F(LinkListCtrlTest, LinksAndTipsStayByKey) {
  for (const auto& [row, column] : {std::pair{-1, 0}, {3, 0}, {0, -1}, {0, 2}}) {
    EXPECT_FALSE(list_.AddLink(row, column)) << row << ' ' << column;
  }
  EXPECT_TRUE(list_.AddLink(1, kLink));
  EXPECT_TRUE(list_.AddLink(1, kLink));
  list_.SetCellTip(1, 0, u"one"_qs);
  list_.SetCellTip(2, 0, u"two"_qs);
  EXPECT_TRUE(list_.DeleteItem(1));
  EXPECT_FALSE(list_.DeleteItem(2));
  EXPECT_EQ(list_.GetCellTip(1, 0), QString());
  EXPECT_EQ(list_.GetCellTip(2, 0), u"two"_qs);
  EXPECT_TRUE(list_.DeleteAllItems());
  EXPECT_EQ(model_.rowCount(), 0);
  EXPECT_EQ(list_.GetCellTip(2, 0), QString());
  Fill();
  EXPECT_TRUE(list_.HasLink(1, kLink));
}

TEST_F(LinkListCtrlTest, MouseOverTheTextAloneIsHover) {
  list_.AddLink(0, kLink);
  list_.AddLink(1, kLink);
  const QPoint beside(list_.LinkTextRect(0, kLink).right() + 5, Link(0).y());
  const std::tuple<QPoint, bool, bool> moves[] = {{Link(0), true, false},
                                                  {beside, false, false},
                                                  {Link(0), true, false},
                                                  {Link(1), false, true}};
  for (const auto& [point, first, second] : moves) {
    Move(point);
    EXPECT_EQ(list_.LinkHover(0, kLink), first);
    EXPECT_EQ(list_.LinkHover(1, kLink), second);
    EXPECT_EQ(list_.viewport()->cursor().shape(),
              first || second ? Qt::PointingHandCursor : Qt::ArrowCursor);
  }
}

TEST_F(LinkListCtrlTest, TipShowsOverItsCellOnly) {
  list_.SetCellTip(0, 0, u"Name:<i>a</i>"_qs);
  EXPECT_TRUE(TipAt(Middle(0, 0)));
  EXPECT_TRUE(QToolTip::text().contains(u"Name:&lt;i&gt;a"_qs));
  EXPECT_FALSE(TipAt(Middle(0, 1)));
  EXPECT_FALSE(TipAt(Middle(1, 0)));
  EXPECT_FALSE(TipAt(QPoint(5, list_.viewport()->height() - 2)));
}

TEST_F(LinkListCtrlTest, ClicksAndEnterReachTheOwner) {
  QSignalSpy clicks(&list_, &CLinkListCtrl::CellClicked);
  QSignalSpy activations(&list_, &CLinkListCtrl::RowActivated);
  QTest::mouseClick(list_.viewport(), Qt::LeftButton, {}, Middle(1, kLink));
  QTest::mouseClick(list_.viewport(), Qt::RightButton, {}, Middle(0, kLink));
  ASSERT_EQ(clicks.count(), 1);
  EXPECT_EQ(clicks[0], (QVariantList{1, kLink}));
  QTest::mouseClick(list_.viewport(), Qt::LeftButton, {}, QPoint(5, 190));
  EXPECT_EQ(clicks.back(), (QVariantList{-1, 0}));  // below the rows, still in a column
  EXPECT_EQ(activations.count(), 0);

  clicks.clear();
  QTest::mouseDClick(list_.viewport(), Qt::LeftButton, {}, Middle(0, 0));
  EXPECT_EQ(activations.count(), 1);
  EXPECT_LE(clicks.count(), 1);  // the first click of the two; never the second
  QTest::keyClick(&list_, Qt::Key_Return);
  QTest::keyClick(&list_, Qt::Key_Space);
  EXPECT_EQ(activations.count(), 2);
}

}  // namespace
}  // namespace updown
