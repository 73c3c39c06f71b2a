// Where the keyboard goes in the main window.
#include <QApplication>
#include <algorithm>

#include "tests/app/main_window_world.h"
#include "widgets/row_list_view.h"

namespace updown {
namespace {

using Keyboard = MainWindowWorld;

TEST_F(Keyboard, ReachesWhatCanBeSeenAndTheCommandsFromEachPane) {
  Open();
  MainWindow& window = *window_;
  window.activateWindow();
  auto* const tree = window.findChild<PackageTree*>();
  auto* const list = window.findChild<RowListView*>(u"packageList"_qs);
  ASSERT_TRUE(Await([list] { return list->SelectedRow() == 0; }));
  ASSERT_TRUE(Await([list] { return list->hasFocus(); }));

  const auto tabMeetsTree = [&] {
    bool met = false;
    for (int i = 0; i < 10; ++i) {  // more than there are stops
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

  // The window of this name once it is the active one.
  const auto active = [](const QString& name) -> QWidget* {
    const auto now = [&] {
      QWidget* const one = QApplication::activeWindow();
      return one != nullptr && one->objectName() == name ? one : nullptr;
    };
    return Await([&] { return now() != nullptr; }) ? now() : nullptr;
  };
  for (const char* name : {"packageList", "packageTree", "packageNotes", "attachmentList"}) {
    auto* const pane = window.findChild<QWidget*>(QLatin1String(name));
    const auto press = [&](int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
      window.activateWindow();
      ASSERT_TRUE(active(u"mainWindow"_qs));
      pane->setFocus();
      QTest::keyClick(pane, static_cast<Qt::Key>(key), modifiers);
    };
    ASSERT_TRUE(Await([&] { return !window.Area().Refreshing(); }));
    press(Qt::Key_F5);
    EXPECT_TRUE(window.Area().Refreshing()) << name;
    press(Qt::Key_J, Qt::ControlModifier);
    QWidget* const transfers = active(u"transferStatus"_qs);
    ASSERT_TRUE(transfers) << name;
    QTest::keyClick(transfers, Qt::Key_F1);
    QWidget* const help = active(u"helpWindow"_qs);
    ASSERT_TRUE(help) << "from the transfers too";
    QTest::keyClick(help, Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(help->isVisible()) << name;
    press(Qt::Key_F, Qt::ControlModifier);
    QWidget* const line = window.focusWidget();
    EXPECT_EQ(line->objectName(), u"findLine"_qs) << name;
    QTest::keyClick(line, Qt::Key_Escape);
    EXPECT_FALSE(line->isVisible()) << name;
    press(Qt::Key_F6);
    EXPECT_EQ(tree->hasFocus(), pane != tree) << name;
  }
}

}  // namespace
}  // namespace updown
