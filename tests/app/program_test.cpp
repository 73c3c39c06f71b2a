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

class ProgramTest : public ::testing::Test {
 protected:
  static void Run(QProcess& process, const QStringList& arguments) {
    // The test may have been started where SIGHUP is ignored.
    process.setChildProcessModifier([] { ::signal(SIGHUP, SIG_DFL); });
    process.start(QStringLiteral(UPDOWN_PROGRAM), arguments);
    ASSERT_TRUE(process.waitForStarted(kPatienceMs));
  }

  // Until it has asked for its first listing.
  void Start(QProcess& process) {
    served_.Service().ForgetRequests();
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    Run(process, {u"-s"_qs, u"fileservice"_qs});
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
  for (const int signal : {SIGTERM, SIGHUP}) {
    QProcess process;
    Start(process);
    // A second start ends silently, whatever its command line.
    QProcess second;
    Run(second, {});
    EXPECT_TRUE(second.waitForFinished(kPatienceMs));
    EXPECT_EQ(second.exitCode(), 0);
    EXPECT_EQ(process.state(), QProcess::Running);
    End(process, signal);
  }
}

TEST_F(ProgramTest, ARefusedStartDoesNotHoldUpARightOne) {
  QProcess refused;
  Run(refused, {u"-p"_qs, u"8100"_qs});
  QByteArray said;
  EXPECT_TRUE(QTest::qWaitFor(
      [&] { return (said += refused.readAllStandardError()).contains("Usage: updown "); },
      kPatienceMs));
  QProcess right;
  Start(right);  // while the other one's box stands
  EXPECT_EQ(refused.state(), QProcess::Running);
  End(right, SIGTERM);
  refused.kill();
  EXPECT_TRUE(refused.waitForFinished(kPatienceMs));
}

TEST_F(ProgramTest, AnswersWithoutADisplay) {
  QProcessEnvironment bare;
  const std::pair<const char*, const char*> cases[] = {{"--help", "Usage: updown "},
                                                       {"--version", "UpDown "}};
  for (const auto& [option, answer] : cases) {
    QProcess process;
    process.setProcessEnvironment(bare);
    Run(process, {QString::fromLatin1(option)});
    EXPECT_TRUE(process.waitForFinished(kPatienceMs));
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_TRUE(process.readAllStandardOutput().startsWith(answer));
  }
}

}  // namespace
}  // namespace updown
