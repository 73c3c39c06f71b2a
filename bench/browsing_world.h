#pragma once

#include <malloc.h>
#include <stdlib.h>

#include <QHeaderView>
#include <QTest>
#include <QTreeView>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "app/application.h"
#include "app/launch_identity.h"
#include "engine/package.h"
#include "peer/stand_in.h"
#include "tests/support/temporary_folder.h"

namespace updown::bench {

inline constexpr int kPatienceMs = 600000;

// A stand-in service over an area that grows on request, and the client's own windows before it, in
// this process. The folders lie under TMPDIR.
class BrowsingWorld {
 public:
  BrowsingWorld() {
    MakeArea(0);
    peer::Options options;
    options.root = Area();
    service_ = std::make_unique<peer::StandIn>(std::move(options));
    for (const auto& [name, value] : service_->Environment()) {
      setenv(name.c_str(), value.c_str(), 1);
    }
    setenv("XDG_DATA_HOME", folder_.File("data").c_str(), 1);
    setenv("XDG_STATE_HOME", folder_.File("state").c_str(), 1);
    setenv("HOME", folder_.Path().c_str(), 1);
    std::filesystem::create_directory(folder_.File("data"));
  }

  void MakeArea(int packages) const {
    peer::AreaOptions area;
    area.folder = Area();
    area.packages = packages;
    peer::MakeArea(area);
  }

  // Both header files of every package, also of those that the service holds in part.
  void FillCache() const {
    const auto cache = PackageCache::InitPackageCache(ReadLaunchState().identityHash);
    for (const auto& package : std::filesystem::directory_iterator(Area())) {
      const std::string name = package.path().filename();
      if (IsPackageName(name)) {
        const std::string text = "[Tallbin]\r\nTXT_From=Ann Field\r\nSend_Time=2008-" + name +
                                 "\r\nTXT_To=office\r\nTXT_Subject=Plans, part " +
                                 std::to_string(std::hash<std::string>()(name) % 100000) +
                                 "\r\nTXT_Notes=As agreed.\r\n";
        test::WriteFile(cache.PathOf(name + ".ini"), text);
        test::WriteFile(cache.PathOf(name + "_Start.ini"), text);
      }
    }
  }

  // Header files that the service holds.
  int HeadersInArea() const {
    int headers = 0;
    for (const auto& file : std::filesystem::recursive_directory_iterator(Area())) {
      headers += file.path().extension() == ".ini" ? 1 : 0;
    }
    return headers;
  }
  // Header files that have arrived: each is compared with the service's.
  int HeadersInCache() const {
    int headers = 0;
    for (const auto& file : std::filesystem::directory_iterator(Window().Cache().Root())) {
      std::string package = file.path().stem();
      package = package.substr(0, package.find('_'));
      const auto original = Area() + "/" + package + "/" + file.path().filename().string();
      headers += test::ReadFile(original) == test::ReadFile(file.path()) ? 1 : 0;
    }
    return headers;
  }

  bool Start() {
    app_ = std::make_unique<Application>(
        std::vector<std::string>{"updown", "-s", peer::Options().serviceName});
    if (!app_->Start()) {
      return false;
    }
    list_ = Window().findChild<QTreeView*>(QStringLiteral("packageList"));
    return list_ != nullptr;
  }

  peer::StandIn& Service() const { return *service_; }
  MainWindow& Window() const { return *app_->Window(); }
  QTreeView& List() const { return *list_; }
  int Rows() const { return list_->model()->rowCount(list_->rootIndex()); }
  std::string Cell(int row, int column) const {
    return list_->model()->index(row, column, list_->rootIndex()).data().toString().toStdString();
  }
  std::string Area() const { return folder_.File("area"); }

  // What a person waits for: the key's work and the list's new picture.
  void Refresh() const {
    QTest::keyClick(list_, Qt::Key_F5);
    const PackageArea& area = Window().Area();
    if (!QTest::qWaitFor([&area] { return !area.Refreshing(); }, kPatienceMs)) {
      std::puts("no answer");
    }
    list_->viewport()->repaint();
  }
  void ClickHeading(int column) const {
    QHeaderView& header = *list_->header();
    QTest::mouseClick(header.viewport(), Qt::LeftButton, {},
                      {header.sectionViewportPosition(column) + 30, header.height() / 2});
    list_->viewport()->repaint();
  }

  int Tasks(bool queuedOnly) const {
    int count = 0;
    Window().Tasks().Queue().ForEach([&](const TransferTask& task) {
      count += !queuedOnly || task.record->state == TransferState::Queued ? 1 : 0;
    });
    return count;
  }

  int Workers() const {
    int count = 0;
    Window().Tasks().Queue().ForEach(
        [&](const TransferTask& task) { count += task.WorkerActive() ? 1 : 0; });
    return count;
  }

 private:
  test::TemporaryFolder folder_;
  std::unique_ptr<peer::StandIn> service_;
  std::unique_ptr<Application> app_;
  QTreeView* list_ = nullptr;
};

// Resident memory and what is allocated of it, in KiB.
struct Memory {
  long resident = 0;
  long allocated = 0;
};

inline Memory MemoryNow() {
  long pages = 0;
  std::ifstream("/proc/self/statm") >> pages >> pages;
  return {pages * 4, static_cast<long>(mallinfo2().uordblks + mallinfo2().hblkhd) / 1024};
}

}  // namespace updown::bench
