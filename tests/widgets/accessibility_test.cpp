#include "widgets/accessibility.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>

#include "widgets/link_delegate.h"
#include "widgets/progress_delegate.h"
#include "widgets/row_list_view.h"

namespace updown {
namespace {

QAccessibleInterface* Heard(QObject* object) {
  return QAccessible::queryAccessibleInterface(object);
}

TEST(Accessibility, CellsOfAListOutliveWhatTheyShow) {
  InstallAccessibility();
  QStandardItemModel model;
  for (int row = 0; row < 3; ++row) {
    auto* bar = new QStandardItem;
    bar->setData(row == 0 ? kWaitingBar : 50.0F, kPercentRole);
    auto* save = new QStandardItem(u"Save"_qs);
    save->setData(true, kLinkRole);
    model.appendRow({new QStandardItem(u"file%1"_qs.arg(row)), bar, save});
  }
  RowListView list(nullptr);
  list.setModel(&model);
  auto* links = new LinkDelegate(&list);
  list.show();
  QAccessibleTableInterface& table = *Heard(&list)->tableInterface();
  EXPECT_EQ(table.rowCount(), 3);
  EXPECT_TRUE(table.cellAt(0, 1)->state().busy);
  QAccessibleInterface* const name = table.cellAt(1, 0);
  QAccessibleInterface* const link = table.cellAt(1, 2);
  EXPECT_EQ(Heard(&list)->indexOfChild(link), 8);
  const QSignalSpy presses(links, &LinkDelegate::Activated);
  for (QAccessibleInterface* const cell : {name, link}) {
    cell->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QCoreApplication::processEvents();
    EXPECT_EQ(presses.count(), cell == link ? 1 : 0);
  }
  EXPECT_TRUE(link->state().selected);

  // A cell that has moved up is the same one; what has gone is not found any more.
  model.removeRow(0);
  EXPECT_EQ(table.cellAt(0, 0), name);
  EXPECT_EQ(name->text(QAccessible::Name), u"file1"_qs);
  EXPECT_EQ(table.cellAt(2, 0), nullptr);
  model.removeRows(0, 2);
  EXPECT_FALSE(name->isValid());
}

}  // namespace
}  // namespace updown
