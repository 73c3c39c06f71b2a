// The program itself, as a process of its own.
#include <gtest/gtest.h>
#include <signal.h>

#include <QElapsedTimer>
#include <QProcess>
#include <QTest>

#include "service/messages.h"
#include "tests/app/served_launch.h"

namespace updown {
namespace {

class ProgramTest : public testing::Test {
 protected:
  // Until it has asked for its first listing.
  void Start(QProcess& process) {
    served_.Service().ForgetRequests();
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QStringLiteral(UPDOWN_PROGRAM), {u"-s"_qs, u"fileservice"_qs});
    ASSERT_TRUE(QTest::qWaitFor([this] { return served_.Saw(message::kList); }, kPatienceMs));
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

TEST_F(ProgramTest, RunsOnceUntilASignalClosesIt) {
  for (const int signal : {SIGTERM, SIGINT}) {
    QProcess process;
    Start(process);
    // A second start ends silently, whatever its command line.
    QProcess second;
    second.start(QStringLiteral(UPDOWN_PROGRAM), QStringList());
    EXPECT_TRUE(second.waitForFinished(kPatienceMs));
    EXPECT_EQ(second.exitCode(), 0);
    EXPECT_EQ(process.state(), QProcess::Running);
    End(process, signal);
  }
}

}  // namespace
}  // namespace updown
