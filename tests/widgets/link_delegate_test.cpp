#include "widgets/link_delegate.h"

#include <gtest/gtest.h>

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

  QPoint Middle(int row) const { return links_->LinkRect(model_.index(row, kSave)).center(); }

  QStandardItemModel model_;
  RowListView list_{nullptr};
  LinkDelegate* links_ = new LinkDelegate(&list_);
};

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
