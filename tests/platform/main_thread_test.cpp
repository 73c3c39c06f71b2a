#include "platform/qt/main_thread.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <thread>
#include <vector>

namespace updown {
namespace {

void EndAfter(QEventLoop& loop, int milliseconds) {
  QTimer::singleShot(milliseconds, &loop, [&loop] { loop.exit(1); });
}

TEST(MainThread, IsReachedInsideTheLoopOfADialogAndNotAfterItsEnd) {
  char program[] = "platform_qt_test";
  char* arguments[] = {program, nullptr};
  int count = 1;
  const QCoreApplication application(count, arguments);
  std::vector<int> seen;
  std::shared_ptr<PostedCalls> left;
  {
    MainThread mainThread;
    left = mainThread.Calls();
    QEventLoop outer;
    EndAfter(outer, 20000);
    std::thread worker([&] {
      mainThread.Post([&] {
        QEventLoop dialog;
        EndAfter(dialog, 20000);
        seen.push_back(1);
        mainThread.Post([&] { dialog.quit(); });
        EXPECT_EQ(dialog.exec(), 0);
      });
      mainThread.Post([&] { seen.push_back(2); });
      mainThread.Post([&] { outer.quit(); });
    });
    EXPECT_EQ(outer.exec(), 0);
    worker.join();
    EXPECT_TRUE(left->Post([&] { seen.push_back(3); }));
  }
  EXPECT_FALSE(left->Post([&] { seen.push_back(4); }));
  QCoreApplication::processEvents();
  EXPECT_EQ(seen, (std::vector<int>{1, 2}));
}

}  // namespace
}  // namespace updown
