#include "app/desktop_notifications.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>
#include <filesystem>

#include "app/session_bus.h"
#include "platform/unique_fd.h"
#include "tests/app/main_window_world.h"
#include "tests/support/environment.h"

namespace updown {
namespace {

constexpr std::chrono::milliseconds kCollect{50};

// No program is started by asking for its service.
constexpr const char* kBusConfiguration =
    "<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen>"
    "<policy context=\"default\"><allow send_destination=\"*\"/><allow eavesdrop=\"false\"/>"
    "<allow own=\"*\"/></policy></busconfig>";

class DesktopNotificationsTest : public MainWindowWorld {
 protected:
  ~DesktopNotificationsTest() override {
    window_.reset();
    for (QProcess* process : {&service_, &bus_}) {
      process->kill();
      process->waitForFinished(kPatienceMs);
    }
  }

  static QString LineOf(QProcess& process) {
    (void)Await([&] { return process.canReadLine(); });
    return QString::fromUtf8(process.readLine()).trimmed();
  }
  void StartBus() {
    test::WriteFile(folder_.File("bus.conf"), kBusConfiguration);
    bus_.start(u"dbus-daemon"_qs,
               {u"--nofork"_qs, u"--print-address=1"_qs,
                u"--config-file="_qs + QString::fromStdString(folder_.File("bus.conf"))});
    qputenv("DBUS_SESSION_BUS_ADDRESS", LineOf(bus_).toUtf8());
  }
  void StartService() {
    service_.start(QStringLiteral(UPDOWN_FAKE_NOTIFICATIONS), QStringList());
    ASSERT_EQ(LineOf(service_), u"ready"_qs);
  }
  QString Said() { return LineOf(service_); }

  test::TemporaryFolder folder_;
  const test::ScopedEnvironment environment_{
      {{"DBUS_SESSION_BUS_ADDRESS", ""}, {"XDG_RUNTIME_DIR", folder_.Path()}}};
  QProcess bus_;
  QProcess service_;
};

TEST_F(DesktopNotificationsTest, GathersWhatComesAndReplacesItWhileItStands) {
  StartBus();
  StartService();
  DesktopNotifications notifications(kCollect);
  QSignalSpy clicked(&notifications, &DesktopNotifications::Clicked);
  notifications.TransferEnded(u"a<b>&.pdf"_qs, {});
  EXPECT_EQ(Said(), u"notify|1|Transfer finished|a&lt;b&gt;&amp;.pdf|default|transfer.complete"_qs);
  notifications.TransferEnded(u"c.pdf"_qs, u"disk full"_qs);
  notifications.TransferEnded(u"d.pdf"_qs, {});
  notifications.PackageCame(u"one"_qs);
  EXPECT_EQ(Said(), u"notify|1|Transfers have ended|Saved: 2/Failed: 1|default|transfer.error"_qs);
  EXPECT_EQ(Said(), u"notify|2|A package has come|one|default|email.arrived"_qs);

  service_.write("click 2\n");
  ASSERT_TRUE(Await([&] { return clicked.size() == 1; }));
  EXPECT_EQ(clicked.at(0).at(0).value<NotificationKind>(), NotificationKind::Packages);

  service_.write("close 1\nclick 2\n");  // the second tells that the first has been heard
  ASSERT_TRUE(Await([&] { return clicked.size() == 2; }));
  notifications.TransferEnded(u"e.pdf"_qs, {});
  EXPECT_EQ(Said(), u"notify|3|Transfers have ended|Saved: 3/Failed: 1|default|transfer.error"_qs);

  // Coming back takes them away, and what happens then is seen in the window.
  notifications.SetActive(true);
  EXPECT_EQ(Said(), u"close|3"_qs);
  EXPECT_EQ(Said(), u"close|2"_qs);
  notifications.TransferEnded(u"f.pdf"_qs, {});
  notifications.SetActive(false);
  notifications.TransferEnded(u"g.pdf"_qs, u"disk full"_qs);
  EXPECT_EQ(Said(), u"notify|4|Transfer failed|g.pdf/disk full|default|transfer.error"_qs);
}

TEST_F(DesktopNotificationsTest, TellWhatTheMainWindowHearsOf) {
  StartBus();
  StartService();
  Open();
  ASSERT_TRUE(Listed());
  Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationInactive);
  PackageArea& area = window_->Area();
  const std::string package = area.NameAt(area.index(0, 0, area.Root()));
  const TaskPointer task = window_->Tasks().AddDownload(
      {"x", "/" + package + "/" + package + ".ini", "fileservice", 8080},
      served_->DataFolder() + "/received.txt", true);
  window_->AllDownloads().ResumeTask(task->id);
  EXPECT_EQ(Said(), u"notify|1|Transfer finished|received.txt|default|transfer.complete"_qs);
  std::filesystem::create_directory(served_->AreaFolder() + "/20301104062529");
  area.Refresh(AskedBy::Program);
  EXPECT_EQ(Said(), u"notify|2|A package has come|20301104062529|default|email.arrived"_qs)
      << "the first four were no news";
  window_->hide();
  service_.write("click 2\n");
  EXPECT_TRUE(Await([&] { return window_->isVisible(); }));
}

TEST_F(DesktopNotificationsTest, AreShownOnceAServiceIsThere) {
  StartBus();
  const std::string address = SessionBusAddress();
  LeaveOutSilentBus();
  EXPECT_EQ(SessionBusAddress(), address) << "this one answers";
  DesktopNotifications notifications(kCollect);
  notifications.PackageCame(u"one"_qs);
  QTest::qWait(200);
  StartService();
  notifications.PackageCame(u"two"_qs);
  EXPECT_EQ(Said(), u"notify|1|Packages have come|New packages: 2|default|email.arrived"_qs);
}

TEST_F(DesktopNotificationsTest, WithoutABusNothingHappens) {
  DesktopNotifications notifications(kCollect);
  notifications.PackageCame(u"one"_qs);
  QTest::qWait(200);
  notifications.BeginEnd();
  EXPECT_TRUE(notifications.WaitForEnd(std::chrono::milliseconds(kPatienceMs)));
}

TEST_F(DesktopNotificationsTest, ABusThatNeverAnswersHoldsNothingUp) {
  UniqueFd silent(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{AF_UNIX, {}};
  folder_.File("bus").copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(bind(silent.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(listen(silent.Get(), 5), 0);
  pollfd asked{silent.Get(), POLLIN, 0};
  DesktopNotifications notifications(kCollect);
  notifications.PackageCame(u"one"_qs);
  QElapsedTimer timer;
  timer.start();
  ASSERT_TRUE(Await([&] { return poll(&asked, 1, 0) == 1; }));
  for (int i = 0; i < 20; ++i) {
    notifications.PackageCame(u"more"_qs);
    timer.restart();
    QTest::qWait(10);
    EXPECT_LT(timer.elapsed(), 500);
  }
  timer.restart();
  notifications.BeginEnd();
  EXPECT_FALSE(notifications.WaitForEnd(std::chrono::milliseconds(50)));
  EXPECT_LT(timer.elapsed(), 500);
  LeaveOutSilentBus();
  EXPECT_EQ(SessionBusAddress(), "disabled:") << "the toolkit would wait for it without end";
  silent = UniqueFd();  // lets the thread go, which would hold up this process's end
}

}  // namespace
}  // namespace updown
