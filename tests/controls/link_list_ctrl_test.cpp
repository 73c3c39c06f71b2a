#include "controls/link_list_ctrl.h"

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

class LinkListCtrlTest : public testing::Test {
 protected:
  LinkListCtrlTest() {
    list_.setModel(&model_);
    Fill();
    list_.setColumnWidth(0, 200);
    list_.setColumnWidth(kLink, 100);
    list_.resize(400, 200);
    list_.show();
  }
  ~LinkListCtrlTest() override { QToolTip::hideText(); }

  void Fill() {
    for (int row = 0; row < 3; ++row) {
      model_.appendRow({new QStandardItem(QStringLiteral("file")),
                        new QStandardItem(row == 2 ? QString() : QStringLiteral("Save"))});
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

  QStandardItemModel model_;
  CLinkListCtrl list_;
};

TEST_F(LinkListCtrlTest, LinksStayByKey) {
  for (const auto& [row, column] : {std::pair{-1, 0}, {3, 0}, {0, -1}, {0, 2}}) {
    EXPECT_FALSE(list_.AddLink(row, column)) << row << ' ' << column;
  }
  EXPECT_TRUE(list_.AddLink(1, kLink));
  EXPECT_TRUE(list_.AddLink(1, kLink));
  list_.SetCellTip(1, 0, QStringLiteral("one"));
  list_.SetCellTip(2, 0, QStringLiteral("two"));
  EXPECT_TRUE(list_.DeleteItem(1));
  EXPECT_FALSE(list_.DeleteItem(2));
  EXPECT_EQ(list_.GetCellTip(1, 0), QString());
  EXPECT_EQ(list_.GetCellTip(2, 0), QStringLiteral("two"));
  EXPECT_TRUE(list_.DeleteAllItems());
  EXPECT_TRUE(list_.DeleteAllItems());
  EXPECT_EQ(model_.rowCount(), 0);
  EXPECT_EQ(list_.GetCellTip(2, 0), QString());
  Fill();
  EXPECT_TRUE(list_.HasLink(1, kLink));
  EXPECT_TRUE(list_.AddLink(1, kLink));
}

TEST_F(LinkListCtrlTest, MouseOverTheTextAloneIsHover) {
  for (int row = 0; row < 3; ++row) {
    list_.AddLink(row, kLink);
  }
  Move(list_.LinkTextRect(0, kLink).center());
  EXPECT_TRUE(list_.LinkHover(0, kLink));
  EXPECT_EQ(list_.viewport()->cursor().shape(), Qt::PointingHandCursor);
  Move(QPoint(list_.LinkTextRect(0, kLink).right() + 5, Middle(0, kLink).y()));
  EXPECT_FALSE(list_.LinkHover(0, kLink));
  EXPECT_EQ(list_.viewport()->cursor().shape(), Qt::ArrowCursor);
  Move(list_.LinkTextRect(0, kLink).center());
  Move(list_.LinkTextRect(1, kLink).center());
  EXPECT_FALSE(list_.LinkHover(0, kLink));
  EXPECT_TRUE(list_.LinkHover(1, kLink));
  EXPECT_EQ(list_.viewport()->cursor().shape(), Qt::PointingHandCursor);

  EXPECT_TRUE(list_.LinkTextRect(2, kLink).isEmpty());
  Move(Middle(2, kLink) - QPoint(44, 0));
  EXPECT_FALSE(list_.LinkHover(2, kLink));
}

TEST_F(LinkListCtrlTest, LinksArePaintedInTheirColours) {
  list_.AddLink(0, kLink);
  list_.AddLink(1, kLink);
  Move(list_.LinkTextRect(1, kLink).center());
  const QImage image = list_.viewport()->grab().toImage();
  const auto has = [&](int row, const QColor& color) {
    const QRect text = list_.LinkTextRect(row, kLink);
    for (int x = text.left(); x <= text.right(); ++x) {
      for (int y = text.top(); y <= text.bottom(); ++y) {
        if (image.pixelColor(x, y) == color) {
          return true;
        }
      }
    }
    return false;
  };
  EXPECT_TRUE(has(0, LinkColor(list_.palette(), false)));
  EXPECT_FALSE(has(0, LinkColor(list_.palette(), true)));
  EXPECT_TRUE(has(1, LinkColor(list_.palette(), true)));
}

TEST_F(LinkListCtrlTest, TipShowsOverItsCellOnly) {
  list_.SetCellTip(0, 0, QStringLiteral("Name:<i>a</i>"));
  EXPECT_TRUE(TipAt(Middle(0, 0)));
  EXPECT_TRUE(QToolTip::text().contains(QStringLiteral("Name:&lt;i&gt;a")));
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
  QTest::keyClick(&list_, Qt::Key_Enter);
  QTest::keyClick(&list_, Qt::Key_Space);
  EXPECT_EQ(activations.count(), 3);
}

}  // namespace
}  // namespace updown
