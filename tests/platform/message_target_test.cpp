#include "platform/qt/message_target.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <optional>
#include <thread>

namespace updown {
namespace {

char programName[] = "platform_qt_test";
char* arguments[] = {programName, nullptr};
int argumentCount = 1;

// Lets the application run until `target` has been sent its message by another thread, or gives up.
MessageResult SendAcrossThreads(WindowHandle target) {
  QEventLoop loop;
  QTimer giveUp;
  QObject::connect(&giveUp, &QTimer::timeout, &loop, [&loop] { loop.exit(1); });
  giveUp.start(20000);
  MessageResult result = -1;
  std::thread sender([&] {
    result = SendWindowMessage(target, 1, 0, 0);
    QMetaObject::invokeMethod(&loop, "quit", Qt::QueuedConnection);
  });
  EXPECT_EQ(loop.exec(), 0);
  sender.join();
  return result;
}

TEST(MessageTarget, IsReachedInsideTheLoopOfADialog) {
  const QCoreApplication application(argumentCount, arguments);
  const MessageTarget inner([](const WindowMessage&) { return 5; });
  const MessageTarget outer([&](const WindowMessage&) {
    PostWindowMessage(inner.Handle(), 1, 0, 0);
    return SendAcrossThreads(inner.Handle()) + 1;
  });
  EXPECT_EQ(SendAcrossThreads(outer.Handle()), 6);
}

TEST(MessageTarget, EachApplicationHasItsOwnQueue) {
  std::optional<MessageTarget> leftOver;
  for (int round = 0; round < 3; ++round) {
    std::thread waiting;
    MessageResult result = -1;
    WindowHandle window;
    {
      const QCoreApplication application(argumentCount, arguments);
      leftOver.emplace([](const WindowMessage&) { return 5; });
      window = leftOver->Handle();
      EXPECT_EQ(SendAcrossThreads(window), 5);
      // Nobody runs the loop any more: whether queued by now or not, the sender gets 0.
      waiting = std::thread([&] { result = SendWindowMessage(window, 1, 0, 0); });
    }
    waiting.join();
    EXPECT_EQ(result, 0);
    EXPECT_FALSE(IsWindow(window));
    EXPECT_FALSE(PostWindowMessage(window, 1, 0, 0));
  }
}

}  // namespace
}  // namespace updown
