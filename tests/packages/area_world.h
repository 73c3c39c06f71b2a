#pragma once

#include <gmock/gmock.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "packages/package_area.h"
#include "platform/qt/main_thread.h"
#include "platform/qt/text.h"
#include "service/messages.h"
#include "tests/support/service_world.h"

namespace updown::test {

using peer::Fault;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using Names = std::vector<std::string>;

constexpr int kPatienceMs = 10000;

inline const std::string kFirst = "20080115093011";
inline const std::string kSecond = "20080115093012";
inline const std::string kThird = "20080115093013";

// Wants are noted; the test lets the files arrive.
class NotedFetches : public HeaderFetches {
 public:
  bool FetchHeader(const std::string& package, const std::string& file) override {
    EXPECT_THAT(file, StartsWith(package));
    wanted.push_back(file);
    return true;
  }
  Names wanted;
};

// An area before a service of its own, over a folder. A package has a file "of" + name + ".txt".
class AreaWorld : public ::testing::Test, protected ServiceWorld {
 protected:
  PackageArea& MakeArea(AreaTimes times = {}) {
    area_.emplace(*session_, fetches_, cache_, launch, seenFile_, times);
    tester_.emplace(&*area_, QAbstractItemModelTester::FailureReportingMode::Fatal);
    return *area_;
  }
  // With its packages listed.
  PackageArea& Listed(const Names& packages, AreaTimes times = {}) {
    for (const std::string& name : packages) {
      AddPackage(name);
    }
    PackageArea& area = MakeArea(times);
    EXPECT_TRUE(Refresh(AskedBy::Program));
    return area;
  }
  bool Refresh(AskedBy by = AskedBy::Person) {
    area_->Refresh(by);
    return Await([this] { return !area_->Refreshing(); });
  }
  template <typename Condition>
  static bool Await(Condition condition) {
    return QTest::qWaitFor(condition, kPatienceMs);
  }

  void AddPackage(const std::string& name, Names files = {}) {
    std::filesystem::create_directories(Served(name));
    files.insert(files.end(),
                 {HeaderFileOf(name, true), HeaderFileOf(name, false), "of" + name + ".txt"});
    for (const std::string& file : files) {
      WriteFile(Served(name + "/" + file), "12345");
    }
  }
  // A header file comes into the cache, by itself or by a fetch.
  void PutIntoCache(const std::string& file, const std::string& from) {
    WriteFile(cache_.PathOf(file), "[Tallbin]\nTXT_From=" + from + "\nTXT_Notes=a\xFF\xFF" + "b\n");
  }
  void Arrive(const std::string& package, const std::string& from) {
    for (const bool start : {false, true}) {
      PutIntoCache(HeaderFileOf(package, start), from);
      area_->HeaderEnded(HeaderFileOf(package, start), true);
    }
  }
  std::string Served(const std::string& path) const { return served.File(path); }
  Names Rows() const {
    Names names;
    for (int row = 0; row < area_->rowCount(area_->Root()); ++row) {
      names.push_back(area_->NameAt(area_->index(row, 0, area_->Root())));
    }
    return names;
  }
  std::string Cell(const std::string& package, int column) const {
    return ToUtf8(area_->IndexOf(package, column).data().toString());
  }
  long Requests(std::uint32_t message) const { return Count(message); }

  peer::StandIn& peer_ = peer;
  TemporaryFolder cached_;
  MainThread mainThread_;
  NotedFetches fetches_;
  PackageCache cache_{cached_.Path()};
  std::string seenFile_;
  std::optional<Session> session_{
      std::in_place, service,
      launch,        [this](std::function<void()> call) { mainThread_.Post(std::move(call)); },
      nullptr,       [] {}};
  std::optional<PackageArea> area_;
  std::optional<QAbstractItemModelTester> tester_;
};

}  // namespace updown::test
