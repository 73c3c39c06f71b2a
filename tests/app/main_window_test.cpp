// The main window against a service, in this process.
#include <QApplication>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QTimer>
#include <QToolButton>
#include <QTreeView>
#include <filesystem>

#include "localdata/tasklist.h"
#include "platform/qt/text.h"
#include "service/messages.h"
#include "tests/app/main_window_world.h"

namespace updown {
namespace {

using Kind = peer::Fault::Kind;

class MainWindowTest : public MainWindowWorld {
 protected:
  // A user's task without the question for its place, or a fetch of a header.
  void Fetch(bool keep, const std::string& name) {
    if (keep) {
      std::filesystem::create_directory(served_->AreaFolder() + "/notes");
      test::WriteFile(served_->AreaFolder() + "/notes/x.bin", std::string(200000, 'x'));
      const TaskPointer task = window_->Tasks().AddDownload(
          {name, "/notes/x.bin", "fileservice", 8080}, served_->DataFolder() + "/" + name, keep);
      window_->AllDownloads().ResumeTask(task->id);
    } else {
      window_->AllDownloads().FetchHeader("notes", name);
    }
  }
  std::vector<StoredRecord> Stored() const { return LoadTaskList(served_->TaskListFile()); }
};

TEST_F(MainWindowTest, AnOldWindowIsRaisedByASecondStart) {
  Open();
  window_->showMinimized();
  const auto second = InstanceEvent::CreateOrSignal(EventName());
  EXPECT_EQ(second.outcome, InstanceEvent::Outcome::AlreadyExists);
  EXPECT_TRUE(Await([this] { return !window_->isMinimized(); }));
}

// A worker waits for a block or for the relay's answer, the session for that or for a listing.
TEST_F(MainWindowTest, EndsInTimeWhateverItWaitsFor) {
  for (const auto& [worker, stalled] : {std::pair(true, message::kReadBlock), std::pair(true, 1U),
                                        std::pair(false, 1U), std::pair(false, message::kList)}) {
    SCOPED_TRACE(stalled);
    Start();
    const peer::Fault stall{.kind = Kind::Stall, .message = stalled, .times = 0};
    if (!worker) {
      served_->Service().AddFault(stall);
    }
    Open();
    EXPECT_TRUE(window_->isVisible() && !served_->Saw(1)) << "on the screen before it asks";
    if (worker) {
      ASSERT_TRUE(Listed());
      served_->Service().AddFault(stall);
      served_->Service().ForgetRequests();
      Fetch(true, "x.bin");
    }
    ASSERT_TRUE(Await([&, wanted = stalled] { return served_->Saw(wanted); }));
    QElapsedTimer timer;
    timer.start();
    EXPECT_TRUE(window_->ShutDown());
    EXPECT_LT(timer.elapsed(), kExitMs);
    EXPECT_EQ(Stored().size(), worker ? 1U : 0U);
  }
}

TEST_F(MainWindowTest, OneNoticeTellsAnOutageAndOffersToTryAgain) {
  Open();
  ASSERT_TRUE(Listed());
  const auto* const bar = window_->findChild<NoticeBar*>();
  served_->Service().AddFault({.kind = Kind::DropBefore, .message = message::kList, .times = 0});
  QTest::keyClick(window_->findChild<QTreeView*>(u"packageList"_qs), Qt::Key_F5);
  ASSERT_TRUE(Await([&] { return bar->isVisible(); }));
  EXPECT_TRUE(Listed());
  served_->Service().ClearFaults();
  bar->findChild<QToolButton*>(u"noticeTryAgain"_qs)->click();
  EXPECT_FALSE(bar->isVisible());
  EXPECT_TRUE(Await([&] { return window_->Area().State() == PackageArea::Connection::There; }));
}

TEST_F(MainWindowTest, KeepsUserTasksAndDropsHiddenOnesAtItsEnd) {
  Open();
  ASSERT_TRUE(Listed());
  served_->Service().AddFault(
      {.kind = Kind::Stall, .message = message::kFileInformation, .times = 0});
  Fetch(true, "first");
  Fetch(true, "kept");  // in the pause behind the first one's save
  Fetch(false, "hidden");
  Fetch(false, "../out");
  const std::string cache = window_->Cache().Root();
  window_.reset();
  const std::vector<StoredRecord> stored = Stored();
  ASSERT_EQ(stored.size(), 2U);
  EXPECT_TRUE(stored[1].paths.localPath.ends_with("/kept"));
  EXPECT_EQ(stored[1].state, TransferState::Queued) << "goes on at the next start";
  for (const auto& file : std::filesystem::directory_iterator(cache)) {
    EXPECT_EQ(file.path().extension(), ".ini") << "nothing unfinished stays";
  }
}

TEST_F(MainWindowTest, FetchesAHeaderAgainThatWasCutOff) {
  const auto headerBytes = [](const std::string& folder) {
    std::uintmax_t bytes = 0;
    for (const auto& file : std::filesystem::recursive_directory_iterator(folder)) {
      bytes += file.path().extension() == ".ini" ? file.file_size() : 0;
    }
    return bytes;
  };
  served_->Service().AddFault({.kind = Kind::DropInside, .message = message::kReadBlock});
  Open();
  EXPECT_TRUE(Await([&] {
    QTest::keyClick(window_->findChild<QTreeView*>(u"packageList"_qs), Qt::Key_F5);
    return headerBytes(window_->Cache().Root()) == headerBytes(served_->AreaFolder());
  }));
}

TEST_F(MainWindowTest, SavesAPackageIntoANewFolderOfItsOwn) {
  Open();
  ASSERT_TRUE(Listed());
  Downloads& downloads = window_->AllDownloads();
  const std::string name = window_->Area().Selected();
  const std::string chosen = served_->DataFolder() + "/chosen";
  std::filesystem::create_directories(chosen + "/" + name);
  bool renames = false;
  QTimer person;
  QObject::connect(&person, &QTimer::timeout, &person, [&] {
    if (auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget())) {
      if (renames) {
        Q_EMIT window_->Area().PackageRenamed(name, name + "#");
      }
      dialog->findChild<QLineEdit*>()->setText(FromUtf8(chosen));
      QMetaObject::invokeMethod(dialog, "accept");
    }
  });
  person.start(0);
  for (const bool renamed : {false, false, true}) {
    renames = renamed;
    ASSERT_TRUE(downloads.SavePackage(name));
  }
  std::vector<std::string> paths;
  for (const auto& record : window_->Tasks().Records()) {
    if (record->isFolder != 0) {
      paths.push_back(record->Paths().remotePath + " to " +
                      record->LocalPath().substr(chosen.size()));
    }
  }
  const std::string moved = "/" + name + "# to /" + name;
  EXPECT_EQ(paths, (std::vector<std::string>{moved + " (2)", moved + " (3)", moved + "#"}));
}

// A folder in the place of the temporary file makes every save fail.
TEST_F(MainWindowTest, TellsThatTheListIsNotSaved) {
  Open();
  ASSERT_TRUE(Listed());
  served_->Service().AddFault(
      {.kind = Kind::Stall, .message = message::kFileInformation, .times = 0});
  const auto* const bar = window_->findChild<NoticeBar*>();
  const std::string hindrance = served_->TaskListFile() + ".tmp";
  std::filesystem::create_directory(hindrance);
  Fetch(true, "kept");
  Q_EMIT window_->AllDownloads().SaveNeeded();
  EXPECT_TRUE(Await([bar] { return bar->isVisible(); }));
  EXPECT_TRUE(bar->findChild<QLabel*>()->text().startsWith(u"The list of transfers"_qs));
  std::filesystem::remove(hindrance);
  window_.reset();
  EXPECT_EQ(Stored().size(), 1U) << "the end tries once more";
}

}  // namespace
}  // namespace updown
