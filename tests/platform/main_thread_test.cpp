#include "platform/qt/main_thread.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <cstdlib>
#include <thread>
#include <vector>

namespace updown {
namespace {

TEST(MainThread, IsReachedInsideTheLoopOfADialogAndNotAfterItsEnd) {
  char program[] = "platform_qt_test";
  char* arguments[] = {program, nullptr};
  int count = 1;
  const QCoreApplication application(count, arguments);
  QTimer::singleShot(20000, &application, [] { std::_Exit(1); });
  std::vector<int> seen;
  std::shared_ptr<PostedCalls> left;
  {
    MainThread mainThread;
    left = mainThread.Calls();
    QEventLoop outer;
    std::thread worker([&] {
      mainThread.Post([&] {
        QEventLoop dialog;
        seen.push_back(1);
        mainThread.Post([&] { dialog.quit(); });
        dialog.exec();
      });
      mainThread.Post([&] { seen.push_back(2); });
      mainThread.Post([&] { outer.quit(); });
    });
    outer.exec();
    worker.join();
    EXPECT_TRUE(left->Post([&] { seen.push_back(3); }));
  }
  EXPECT_FALSE(left->Post([&] { seen.push_back(4); }));
  QCoreApplication::processEvents();
  EXPECT_EQ(seen, (std::vector<int>{1, 2}));
}

}  // namespace
}  // namespace updown
