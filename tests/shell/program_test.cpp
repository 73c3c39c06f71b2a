// The program itself, as a process of its own.
#include <gtest/gtest.h>
#include <signal.h>

#include <QElapsedTimer>
#include <QProcess>
#include <QTest>
#include <algorithm>

#include "service/messages.h"
#include "tests/shell/served_launch.h"

namespace updown {
namespace {

constexpr int kPatienceMs = 10000;
constexpr int kExitMs = 2000;

class ProgramTest : public testing::Test {
 protected:
  void Start(QProcess& process, const QStringList& arguments) {
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QStringLiteral(UPDOWN_PROGRAM), arguments);
    ASSERT_TRUE(process.waitForStarted(kPatienceMs));
  }

  bool HasListed() {
    return QTest::qWaitFor(
        [this] {
          const auto requests = served_.Service().Requests();
          return std::any_of(requests.begin(), requests.end(), [](const peer::SeenRequest& r) {
            return r.message == message::kList;
          });
        },
        kPatienceMs);
  }

  static void End(QProcess& process, int signal) {
    QElapsedTimer timer;
    timer.start();
    ::kill(static_cast<pid_t>(process.processId()), signal);
    EXPECT_TRUE(process.waitForFinished(kPatienceMs));
    EXPECT_LT(timer.elapsed(), kExitMs);
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 0);
  }

  ServedLaunch served_;
};

TEST_F(ProgramTest, RunsUntilASignalClosesIt) {
  for (const int signal : {SIGTERM, SIGINT}) {
    served_.Service().ForgetRequests();
    QProcess process;
    Start(process, {u"-s"_qs, u"fileservice"_qs});
    ASSERT_TRUE(HasListed());
    End(process, signal);
  }
}

TEST_F(ProgramTest, ASecondStartEndsSilentlyWhateverItsCommandLine) {
  QProcess first;
  Start(first, {u"-s"_qs, u"fileservice"_qs});
  ASSERT_TRUE(HasListed());
  QProcess second;
  Start(second, {});
  EXPECT_TRUE(second.waitForFinished(kPatienceMs));
  EXPECT_EQ(second.exitCode(), 0);
  EXPECT_EQ(first.state(), QProcess::Running);
  End(first, SIGTERM);
}

}  // namespace
}  // namespace updown
