// What windows remember from one start to the next.
#include <gtest/gtest.h>

#include <QHeaderView>
#include <QLockFile>
#include <QSplitter>
#include <QTest>
#include <filesystem>

#include "app/main_window.h"
#include "tests/app/served_launch.h"

namespace updown {
namespace {

class WindowStateTest : public ::testing::Test {
 protected:
  void SetUp() override {
    auto made = InstanceEvent::CreateOrSignal("window_state_test " + served_.DataFolder());
    ASSERT_TRUE(made.event);
    event_ = std::move(made.event);
  }

  void Open() {
    window_ = std::make_unique<MainWindow>(served_.Launch(), service_, *event_);
    window_->show();
    list_ = window_->findChild<PackageList*>();
    ASSERT_TRUE(QTest::qWaitFor([this] { return list_->RowCount() == 4; }, kPatienceMs));
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
  QString Seen() const {
    const QHeaderView* header = list_->header();
    return QStringLiteral("%1x%2 tree %3 list %4 from %5 sorted %6 %7")
        .arg(window_->width())
        .arg(window_->height())
        .arg(Splitter("outerSplitter")->sizes().constFirst())
        .arg(Splitter("innerSplitter")->sizes().constFirst())
        .arg(header->sectionSize(package_column::kFrom))
        .arg(header->sortIndicatorSection())
        .arg(header->sortIndicatorOrder());
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
  std::string File() const { return served_.StateFolder() + "/updown/windows.ini"; }

  ServedLaunch served_;
  FileService service_;
  std::unique_ptr<InstanceEvent> event_;
  std::unique_ptr<MainWindow> window_;
  PackageList* list_ = nullptr;
};

TEST_F(WindowStateTest, ComesBackAtTheNextStartAlsoWithoutItsWindowShown) {
  Open();
  Rearrange();
  const QString left = Seen();
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
  const QString first = Seen();
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
  const QString left = Seen();
  window_.reset();
  QLockFile lock(QString::fromStdString(File() + ".lock"));
  ASSERT_TRUE(lock.lock());
  QElapsedTimer timer;
  timer.start();
  Open();
  EXPECT_EQ(Seen(), left) << "reading needs no lock";
  timer.restart();
  EXPECT_FALSE(window_->ShutDown()) << "its thread still waits";
  EXPECT_LT(timer.elapsed(), kExitMs);
  lock.unlock();
  EXPECT_TRUE(QTest::qWaitFor([&] { return lock.tryLock(0); }, kPatienceMs));
}

}  // namespace
}  // namespace updown
