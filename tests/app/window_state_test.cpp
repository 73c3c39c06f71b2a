// What windows remember from one start to the next.
#include <QHeaderView>
#include <QLockFile>
#include <QSplitter>
#include <filesystem>

#include "tests/app/main_window_world.h"

namespace updown {
namespace {

class WindowStateTest : public MainWindowWorld {
 protected:
  void Open() {
    MainWindowWorld::Open();
    list_ = window_->findChild<PackageList*>();
    ASSERT_TRUE(Listed());
  }

  // By a user's hands.
  void Rearrange() {
    window_->resize(700, 500);
    Splitter("outerSplitter")->setSizes({230, 470});
    Splitter("innerSplitter")->setSizes({150, 350});
    list_->header()->resizeSection(package_column::kFrom, 77);
    list_->sortByColumn(package_column::kSubject, Qt::DescendingOrder);
    QTest::keyClick(list_, Qt::Key_J, Qt::ControlModifier);
    QWidget* transfers = Transfers();
    ASSERT_TRUE(transfers != nullptr && transfers->isVisible());
    transfers->resize(600, 333);
    QTest::qWait(10);
  }

  // What of it can be seen.
  QList<int> Seen() const {
    const QHeaderView* header = list_->header();
    return {window_->width(),
            window_->height(),
            Splitter("outerSplitter")->sizes().constFirst(),
            Splitter("innerSplitter")->sizes().constFirst(),
            header->sectionSize(package_column::kFrom),
            header->sortIndicatorSection(),
            header->sortIndicatorOrder()};
  }

  QSplitter* Splitter(const char* name) const {
    return window_->findChild<QSplitter*>(QLatin1String(name));
  }
  static QWidget* Transfers() {
    for (QWidget* window : QApplication::topLevelWidgets()) {
      if (window->objectName() == u"transferStatus"_qs) {
        return window;
      }
    }
    return nullptr;
  }
  std::string File() const { return served_->StateFolder() + "/updown/windows.ini"; }

  PackageList* list_ = nullptr;
};

TEST_F(WindowStateTest, ComesBackAtTheNextStartAlsoWithoutItsWindowShown) {
  Open();
  Rearrange();
  const QList<int> left = Seen();
  for (const bool transfersShown : {true, false}) {
    window_.reset();
    Open();
    EXPECT_EQ(Seen(), left) << transfersShown;
    EXPECT_FALSE(Transfers()->isVisible());
  }
  QTest::keyClick(list_, Qt::Key_J, Qt::ControlModifier);
  EXPECT_EQ(Transfers()->size(), QSize(600, 333));
}

// Each of them with the sizes of a first start, and a window on the screen.
TEST_F(WindowStateTest, IsThatOfAFirstStartWhereItsFileIsOfNoUse) {
  Open();
  const QList<int> first = Seen();
  Rearrange();
  window_.reset();
  const std::string good = test::ReadFile(File());
  ASSERT_GT(good.size(), 400U);
  std::string turned = good;
  for (std::size_t at = 0; at < turned.size(); ++at) {
    turned[at] = turned[at] == 'x' ? 'y' : turned[at];  // of "\x0"
  }
  for (const std::string& bytes :
       {good.substr(0, 30), turned, std::string(70000, '\xff'),
        std::string("[mainWindow]\ngeometry=1\ninnerSplitter.splitter=@Invalid()\n")}) {
    test::WriteFile(File(), bytes);
    Open();
    EXPECT_EQ(Seen(), first) << bytes.substr(0, 40);
    window_.reset();
  }
  std::filesystem::remove(File());
  std::filesystem::create_directory(File());
  Open();
  EXPECT_EQ(Seen(), first) << "a folder in its place";
  EXPECT_TRUE(window_->ShutDown());
}

TEST_F(WindowStateTest, HoldsNothingUpWhereTheFileIsLocked) {
  Open();
  Rearrange();
  const QList<int> left = Seen();
  window_.reset();
  QLockFile lock(QString::fromStdString(File() + ".lock"));
  ASSERT_TRUE(lock.lock());
  Open();
  EXPECT_EQ(Seen(), left) << "reading needs no lock";
  QElapsedTimer timer;
  timer.start();
  EXPECT_FALSE(window_->ShutDown()) << "its thread still waits";
  EXPECT_LT(timer.elapsed(), kExitMs);
  lock.unlock();
  EXPECT_TRUE(Await([&] { return lock.tryLock(0); }));
}

}  // namespace
}  // namespace updown
