// Where the keyboard goes in the main window.
#include <gtest/gtest.h>

#include <QTest>

#include "app/main_window.h"
#include "tests/app/served_launch.h"
#include "widgets/row_list_view.h"

namespace updown {
namespace {

TEST(Keyboard, ReachesTheTreeOnlyWhereItCanBeSeen) {
  const ServedLaunch served;
  FileService service;
  auto made = InstanceEvent::CreateOrSignal("keyboard_test " + served.DataFolder());
  ASSERT_TRUE(made.event);
  MainWindow window(served.Launch(), service, *made.event);
  window.show();
  window.activateWindow();
  auto* const tree = window.findChild<PackageTree*>();
  auto* const list = window.findChild<RowListView*>(u"packageList"_qs);
  ASSERT_TRUE(QTest::qWaitFor([list] { return list->SelectedRow() == 0; }, kPatienceMs));
  ASSERT_TRUE(QTest::qWaitFor([list] { return list->hasFocus(); }, kPatienceMs));

  const auto tabMeetsTree = [&] {
    bool met = false;
    for (int i = 0; i < 8; ++i) {
      QTest::keyClick(window.focusWidget(), Qt::Key_Tab);
      met = met || tree->hasFocus();
    }
    return met;
  };
  EXPECT_FALSE(tabMeetsTree());
  QTest::keyClick(&window, Qt::Key_F6);
  EXPECT_TRUE(tree->hasFocus());
  EXPECT_GT(tree->visibleRegion().boundingRect().width(), 100);
  EXPECT_TRUE(tabMeetsTree());
  tree->setFocus();
  QTest::keyClick(&window, Qt::Key_F6);
  EXPECT_TRUE(list->hasFocus());

  // A current row that is not selected is where the first key leads.
  for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Home}) {
    list->selectionModel()->clearSelection();
    QTest::keyClick(list, key);
    EXPECT_EQ(list->SelectedRow(), 0) << key;
  }

  auto* const note = window.findChild<QWidget*>(u"packageNotes"_qs);
  note->setFocus();
  QTest::keyClick(note, Qt::Key_F5);
  EXPECT_TRUE(window.Area().Refreshing()) << "wherever the keyboard is";
}

}  // namespace
}  // namespace updown
