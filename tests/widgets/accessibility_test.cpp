#include "widgets/accessibility.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QAction>
#include <QSignalSpy>
#include <QSplitter>
#include <QStandardItemModel>
#include <QTest>

#include "widgets/link_delegate.h"
#include "widgets/progress_delegate.h"
#include "widgets/row_list_view.h"

namespace updown {
namespace {

using Action = QAccessibleActionInterface;

QAccessibleInterface* Heard(QObject* object) {
  return QAccessible::queryAccessibleInterface(object);
}

class Accessibility : public ::testing::Test {
 protected:
  Accessibility() { InstallAccessibility(); }
};

TEST_F(Accessibility, LinksAndBarsOfAListAreWhatTheyShow) {
  QStandardItemModel model;
  model.setHorizontalHeaderLabels({u"Name"_qs, u"Progress"_qs, u"Save"_qs});
  for (int row = 0; row < 3; ++row) {
    auto* bar = new QStandardItem(u"50%"_qs);
    bar->setData(row == 0 ? kWaitingBar : 50.0F, kPercentRole);
    auto* save = new QStandardItem(u"Save"_qs);
    save->setData(true, kLinkRole);
    save->setData(u"Save file%1"_qs.arg(row), Qt::AccessibleTextRole);
    model.appendRow({new QStandardItem(u"file%1"_qs.arg(row)), bar, save});
  }
  RowListView list(nullptr);
  list.setModel(&model);
  auto* links = new LinkDelegate(&list);
  list.show();
  QAccessibleTableInterface& table = *Heard(&list)->tableInterface();
  EXPECT_EQ(Heard(&list)->role(), QAccessible::Table);
  EXPECT_EQ(table.rowCount(), 3);
  EXPECT_EQ(Heard(&list)->child(1)->text(QAccessible::Name), u"Progress"_qs);

  QAccessibleInterface* const link = table.cellAt(1, 2);
  EXPECT_EQ(link->role(), QAccessible::Link);
  EXPECT_EQ(link->text(QAccessible::Name), u"Save file1"_qs);
  EXPECT_EQ(Heard(&list)->indexOfChild(link), 8);
  QAccessibleInterface* const name = table.cellAt(1, 0);
  EXPECT_EQ(name->role(), QAccessible::Cell);
  EXPECT_EQ(name->valueInterface(), nullptr);
  const QSignalSpy presses(links, &LinkDelegate::Activated);
  for (QAccessibleInterface* const cell : {name, link}) {
    cell->actionInterface()->doAction(Action::pressAction());
    QCoreApplication::processEvents();
    EXPECT_EQ(presses.count(), cell == link ? 1 : 0);
  }
  EXPECT_TRUE(link->state().selected);
  EXPECT_FALSE(table.cellAt(0, 2)->state().selected);

  QAccessibleInterface* const bar = table.cellAt(1, 1);
  EXPECT_EQ(bar->role(), QAccessible::ProgressBar);
  EXPECT_EQ(bar->valueInterface()->currentValue().toFloat(), 50);
  EXPECT_TRUE(table.cellAt(0, 1)->state().busy);

  // A cell that has moved up is the same one; what has gone is not found any more.
  model.removeRow(0);
  EXPECT_EQ(table.cellAt(0, 0), name);
  EXPECT_EQ(name->text(QAccessible::Name), u"file1"_qs);
  EXPECT_EQ(table.cellAt(2, 0), nullptr);
  model.removeRows(0, 2);
  EXPECT_FALSE(name->isValid());
  EXPECT_EQ(Heard(&list)->childCount(), 3);
}

TEST_F(Accessibility, TheFocusIsClaimedWhereTheKeyboardIs) {
  QSplitter panes;
  auto* tree = new ItemView(&panes);
  auto* list = new RowListView(&panes);
  tree->setAccessibleName(u"Folders"_qs);
  list->setAccessibleName(u"Files"_qs);
  QStandardItemModel model;
  auto* root = new QStandardItem(u"/"_qs);
  root->appendRow(new QStandardItem(u"a"_qs));
  model.appendRow(root);
  for (ItemView* view : {tree, static_cast<ItemView*>(list)}) {
    view->setModel(&model);
  }
  tree->expandAll();
  panes.show();
  QApplication::setActiveWindow(&panes);
  for (QWidget* view : {static_cast<QWidget*>(tree), static_cast<QWidget*>(list)}) {
    view->setFocus();
    tree->setCurrentIndex(model.index(0, 0, root->index()));
    list->setCurrentIndex(root->index());
    EXPECT_EQ(Heard(tree)->child(2)->state().focused, view == tree);
    EXPECT_EQ(Heard(list)->child(1)->state().focused, view == list);
  }
  EXPECT_EQ(Heard(tree)->role(), QAccessible::Tree);
  EXPECT_TRUE(Heard(tree)->child(1)->state().expanded);
  EXPECT_EQ(Heard(tree)->child(2)->text(QAccessible::Name), u"a"_qs);
  QAccessibleInterface* const handle = Heard(panes.handle(1));
  EXPECT_EQ(handle->role(), QAccessible::Separator);
  EXPECT_EQ(handle->text(QAccessible::Name), u"Folders | Files"_qs);
}

TEST_F(Accessibility, EnabledCommandsOfAViewAreItsActions) {
  RowListView list(nullptr);
  QAction save(u"Save A&ll…"_qs);
  QAction remove(u"&Delete"_qs);
  remove.setEnabled(false);
  QAction separator;
  separator.setSeparator(true);
  list.addActions({&save, &separator, &remove});
  const QSignalSpy saved(&save, &QAction::triggered);
  Action& actions = *Heard(&list)->actionInterface();
  EXPECT_TRUE(actions.actionNames().contains(u"Save All…"_qs));
  EXPECT_FALSE(actions.actionNames().contains(u"Delete"_qs));
  EXPECT_FALSE(actions.actionNames().contains(QString()));
  actions.doAction(u"Save All…"_qs);
  QCoreApplication::processEvents();
  EXPECT_EQ(saved.count(), 1);
}

}  // namespace
}  // namespace updown
