#include <gtest/gtest.h>

#include <QAccessible>
#include <QCoreApplication>
#include <QSignalSpy>
#include <QStandardItemModel>

#include "controls/link_list_ctrl.h"
#include "controls/progress_painter.h"

namespace updown {
namespace {

TEST(AccessibleTest, ListIsATableWhoseLinksSayTheyAreLinks) {
  QStandardItemModel model;
  model.setHorizontalHeaderLabels({QStringLiteral("Name"), QStringLiteral("Save")});
  model.appendRow(
      {new QStandardItem(QStringLiteral("a.txt")), new QStandardItem(QStringLiteral("go"))});
  model.appendRow(
      {new QStandardItem(QStringLiteral("b.txt")), new QStandardItem(QStringLiteral("go"))});
  CLinkListCtrl list;
  list.setModel(&model);
  list.AddLink(1, 1);
  list.SetCellTip(1, 0, QStringLiteral("Size:5"));

  QAccessibleInterface* view = QAccessible::queryAccessibleInterface(&list);
  ASSERT_NE(view, nullptr);
  QAccessibleTableInterface* table = view->tableInterface();
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(view->role(), QAccessible::Table);
  EXPECT_EQ(table->rowCount(), 2);
  EXPECT_EQ(view->child(1)->text(QAccessible::Name), QStringLiteral("Save"));
  QAccessibleInterface* name = table->cellAt(1, 0);
  EXPECT_EQ(name->text(QAccessible::Name), QStringLiteral("b.txt"));
  EXPECT_EQ(name->text(QAccessible::Description), QStringLiteral("Size:5"));
  EXPECT_EQ(name->role(), QAccessible::Cell);
  QAccessibleInterface* link = table->cellAt(1, 1);
  EXPECT_EQ(link->role(), QAccessible::Link);
  EXPECT_EQ(view->indexOfChild(link), 5);
  EXPECT_EQ(table->cellAt(2, 0), nullptr);

  const QSignalSpy clicks(&list, &CLinkListCtrl::CellClicked);
  name->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  QCoreApplication::processEvents();
  EXPECT_EQ(clicks.count(), 0);
  link->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  QCoreApplication::processEvents();
  EXPECT_EQ(clicks.count(), 1);
  EXPECT_TRUE(link->state().selected);

  // A cell that has moved up is found under its new place, one that has gone no longer.
  model.removeRow(0);
  EXPECT_EQ(table->cellAt(0, 0)->text(QAccessible::Name), QStringLiteral("b.txt"));
  EXPECT_EQ(table->cellAt(1, 0), nullptr);
}

TEST(AccessibleTest, BarTellsItsValue) {
  QWidget parent;
  CProgressPainter bar(&parent);
  bar.Create();
  QAccessibleInterface* spoken = QAccessible::queryAccessibleInterface(&bar);
  ASSERT_NE(spoken, nullptr);
  EXPECT_EQ(spoken->role(), QAccessible::ProgressBar);
  ASSERT_NE(spoken->valueInterface(), nullptr);
  bar.SetPercent(100);
  EXPECT_EQ(spoken->valueInterface()->currentValue().toFloat(), 0);
  EXPECT_TRUE(spoken->state().busy);
  bar.SetWaiting(false);
  bar.SetPercent(42.5);
  EXPECT_EQ(spoken->valueInterface()->currentValue().toFloat(), 42.5);
  EXPECT_EQ(spoken->text(QAccessible::Value), QStringLiteral("42.50%"));
}

}  // namespace
}  // namespace updown
