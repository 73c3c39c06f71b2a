#include "packages/package_area.h"

#include "service/result_codes.h"
#include "tests/packages/area_world.h"

namespace updown::test {
namespace {

using State = PackageFiles::State;
using Link = PackageArea::Connection;

class PackageAreaTest : public AreaWorld {
 protected:
  // Lets answers that are on their way come in, and what they lead to.
  bool Settle() {
    return Await([this] { return !session_->Busy() && area_->Files().state != State::Asked; });
  }
  Names Files() const {
    Names names;
    for (const DirectoryEntry& entry : area_->Files().entries) {
      names.push_back(entry.name);
    }
    return names;
  }
};

TEST_F(PackageAreaTest, ARefreshLeavesWhatIsStillThereInItsPlace) {
  AddPackage("other");
  WriteFile(Served(kThird + "1"), "a file");
  PackageArea& area = Listed({kFirst, kSecond, kThird + "##"});
  EXPECT_THAT(Rows(), ElementsAre(kThird + "##", kSecond, kFirst));
  EXPECT_EQ(area.State(), Link::There);
  area.Select(kSecond);
  ASSERT_TRUE(Settle());

  QSignalSpy reset(&area, &QAbstractItemModel::modelReset);
  QSignalSpy inserted(&area, &QAbstractItemModel::rowsInserted);
  QSignalSpy removed(&area, &QAbstractItemModel::rowsRemoved);
  QSignalSpy selection(&area, &PackageArea::SelectionChanged);
  const QPersistentModelIndex kept = area.IndexOf(kSecond);
  std::filesystem::remove_all(Served(kFirst));
  AddPackage(kThird);
  AddPackage(kThird + "#");
  peer_.ForgetRequests();
  ASSERT_TRUE(Refresh());
  EXPECT_THAT(Rows(), ElementsAre(kThird + "#", kThird, kThird + "##", kSecond));
  EXPECT_EQ(kept, area.IndexOf(kSecond));
  EXPECT_EQ(reset.size() + selection.size(), 0);
  EXPECT_EQ(inserted.size(), 1) << "a span, not row by row";
  EXPECT_EQ(removed.size(), 1);
  ASSERT_TRUE(Settle());
  EXPECT_EQ(Requests(message::kList), 2) << "the packages, and the files of the selected one";

  std::filesystem::remove_all(Served(kSecond));
  ASSERT_TRUE(Refresh());
  EXPECT_EQ(area.Selected(), "") << "no view has chosen another one";
}

TEST_F(PackageAreaTest, AFailedListingRemovesNothingAndIsToldOnceForEachOutage) {
  PackageArea& area = Listed({kFirst, kSecond});
  QSignalSpy failed(&area, &PackageArea::Failed);
  QSignalSpy recovered(&area, &PackageArea::Recovered);
  peer_.AddFault({.kind = Fault::Kind::CutListing, .message = message::kList, .times = 0});
  ASSERT_TRUE(Refresh(AskedBy::Program));
  EXPECT_THAT(Rows(), ElementsAre(kSecond, kFirst));
  EXPECT_EQ(area.State(), Link::Lost);
  ASSERT_EQ(failed.size(), 1);
  EXPECT_EQ(failed[0][0].toUInt(), 8194U);
  ASSERT_TRUE(Refresh(AskedBy::Program));
  area.Select(kFirst);
  ASSERT_TRUE(Settle());
  EXPECT_EQ(area.Files().state, State::Failed);
  EXPECT_EQ(failed.size(), 1);
  ASSERT_TRUE(Refresh(AskedBy::Person));
  EXPECT_EQ(failed.size(), 2) << "who asked is told again";
  EXPECT_EQ(recovered.size(), 0);
  peer_.ClearFaults();
  ASSERT_TRUE(Refresh(AskedBy::Person));
  ASSERT_TRUE(Settle());
  EXPECT_GT(recovered.size(), 0);
  EXPECT_EQ(area.State(), Link::There);
  EXPECT_THAT(Files(), ElementsAre("of" + kFirst + ".txt"));
}

TEST_F(PackageAreaTest, FetchesFewHeadersAtATimeAndThoseOnTheScreenFirst) {
  Names packages;
  for (int i = 10; i < 40; ++i) {
    packages.push_back("200801150930" + std::to_string(i));
  }
  PutIntoCache(HeaderFileOf(packages.back(), true), "cached");
  PutIntoCache(HeaderFileOf(packages.back(), false), "cached");
  PackageArea& area = Listed(packages);
  EXPECT_EQ(Cell(packages.back(), package_column::kFrom), "cached");
  ASSERT_EQ(fetches_.wanted.size(), HeaderQueue::kAtOnce);
  EXPECT_THAT(fetches_.wanted.front(), StartsWith(packages.at(28))) << "nothing lacks on top";
  area.FetchFirst({packages[3]});
  EXPECT_EQ(fetches_.wanted.size(), HeaderQueue::kAtOnce);
  const std::string failed = fetches_.wanted.front();
  area.HeaderEnded(failed, false);
  EXPECT_EQ(fetches_.wanted.back(), packages[3] + ".ini");

  Names& wanted = fetches_.wanted;
  for (std::size_t i = 1; i < wanted.size(); ++i) {
    PutIntoCache(wanted[i], "late");
    area.HeaderEnded(wanted[i], true);
  }
  std::sort(wanted.begin(), wanted.end());
  EXPECT_EQ(wanted.size(), 58U);
  EXPECT_EQ(std::unique(wanted.begin(), wanted.end()), wanted.end()) << "each file once";
  wanted.clear();
  ASSERT_TRUE(Refresh());
  EXPECT_THAT(wanted, ElementsAre(failed)) << "what failed is tried again after the next listing";
}

TEST_F(PackageAreaTest, AHeaderThatArrivesChangesItsRowAndTheFormAlone) {
  PackageArea& area = Listed({kFirst, kSecond});
  area.Select(kSecond);
  ASSERT_TRUE(Settle());
  EXPECT_EQ(Cell(kSecond, package_column::kStatus), "Incomplete");
  QSignalSpy changed(&area, &QAbstractItemModel::dataChanged);
  QSignalSpy form(&area, &PackageArea::HeaderChanged);
  peer_.ForgetRequests();
  Arrive(kSecond, "Ann");
  ASSERT_EQ(changed.size(), 2) << "one row, one time for each file";
  EXPECT_EQ(changed[0][0].toModelIndex(), area.IndexOf(kSecond));
  EXPECT_EQ(form.size(), 2);
  EXPECT_EQ(area.SelectedHeader().from, u"Ann");
  EXPECT_EQ(Cell(kSecond, package_column::kFrom), "Ann");
  EXPECT_EQ(Cell(kSecond, package_column::kStatus), "Completed");
  ASSERT_TRUE(Settle());
  EXPECT_EQ(Requests(message::kList), 1) << "files that were on their way are there now";
  Arrive(kFirst, "Bob");
  EXPECT_EQ(form.size(), 2);

  area.HeaderEnded(HeaderFileOf("20991231235959", true), true);
  EXPECT_EQ(cache_.Names().size(), 4U) << "a file whose package has gone does not stay";
}

TEST_F(PackageAreaTest, OnlyTheLastOfManySelectionsIsAsked) {
  PackageArea& area = Listed({kFirst, kSecond, kThird});
  std::filesystem::create_directory(Served(kThird + "/folder"));
  WriteFile(Served(kThird + "/" + kFirst + ".ini"), "another package's header");
  WriteFile(Served(kThird + "/" + kThird + ".INI"), "a file like others");
  peer_.ForgetRequests();
  for (const std::string& name : {kFirst, kSecond, kThird}) {
    area.Select(name);
  }
  EXPECT_EQ(area.Files().state, State::Asked);
  ASSERT_TRUE(Settle());
  EXPECT_EQ(Requests(message::kList), 1);
  EXPECT_THAT(Files(), ElementsAre(kThird + ".INI", "of" + kThird + ".txt"));
  area.Select({});
  EXPECT_EQ(area.Files().state, State::NotAsked);
}

TEST_F(PackageAreaTest, ARenamedPackageKeepsRowHeaderAndSelection) {
  PutIntoCache(HeaderFileOf(kFirst, true), "Ann");
  PutIntoCache(HeaderFileOf(kFirst, false), "Ann");
  PackageArea& area = Listed({kFirst, kSecond});
  area.Select(kFirst);
  const QPersistentModelIndex row = area.IndexOf(kFirst);
  QSignalSpy renamed(&area, &PackageArea::PackageRenamed);
  area.Rename(kFirst, kThird);
  ASSERT_TRUE(Await([&] { return area.Selected() == kThird && !area.Refreshing(); }));
  EXPECT_EQ(row, area.IndexOf(kThird));
  EXPECT_EQ(Cell(kThird, package_column::kFrom), "Ann");
  EXPECT_EQ(Cell(kThird, package_column::kStatus), "Completed");
  EXPECT_TRUE(std::filesystem::exists(Served(kThird + "/" + kThird + "_Start.ini")));
  EXPECT_FALSE(cache_.Names().contains(HeaderFileOf(kFirst, true)));
  EXPECT_EQ(renamed.size(), 1);
  ASSERT_TRUE(Settle());
  EXPECT_THAT(Files(), ElementsAre("of" + kFirst + ".txt"));
}

// The folder has its new name when one of the files in it cannot be renamed.
TEST_F(PackageAreaTest, ARenameThatStopsHalfWaySaysWhereAndShowsWhatIsTrue) {
  PutIntoCache(HeaderFileOf(kFirst, true), "Ann");
  PackageArea& area = Listed({kFirst});
  QSignalSpy failed(&area, &PackageArea::ChangeFailed);
  peer_.AddFault({.kind = Fault::Kind::WrongCode,
                  .message = message::kRename,
                  .skip = 1,
                  .code = reply::kSuccess + 7});
  area.Rename(kFirst, kThird);
  ASSERT_TRUE(Await([&] { return failed.size() == 1 && !area.Refreshing(); }));
  EXPECT_EQ(failed[0][0].toUInt(), 8199U);
  EXPECT_EQ(ToUtf8(failed[0][1].toString()), "/" + kThird + "/" + kFirst + ".ini");
  EXPECT_THAT(Rows(), ElementsAre(kThird));
  EXPECT_THAT(cache_.Names(), IsEmpty()) << "neither header has its new name";
  area.Select(kThird);
  ASSERT_TRUE(Settle());
  EXPECT_THAT(Files(), ElementsAre("of" + kFirst + ".txt")) << "the old ones are no attachments";

  failed.clear();
  const std::string longer = kThird + "#";
  AddPackage(longer);
  ASSERT_TRUE(Refresh());
  const QSignalSpy renamed(&area, &PackageArea::PackageRenamed);
  area.Rename(longer, kThird);
  ASSERT_TRUE(Await([&] { return failed.size() == 1; }));
  EXPECT_THAT(Rows(), ElementsAre(longer, kThird)) << "never over another package";
  EXPECT_EQ(renamed.size(), 0) << "the new name is the beginning of the old one";
}

TEST_F(PackageAreaTest, WhatTheServiceRefusesToRemoveStays) {
  PutIntoCache(HeaderFileOf(kFirst, true), "Ann");
  PackageArea& area = Listed({kFirst, kSecond}, {.quiet = std::chrono::milliseconds(20)});
  area.Select(kFirst);
  ASSERT_TRUE(Settle());
  QSignalSpy failed(&area, &PackageArea::ChangeFailed);
  const std::string file = "of" + kFirst + ".txt";
  peer_.AddFault({.kind = Fault::Kind::WrongCode,
                  .message = message::kRemoveFile,
                  .times = 2,
                  .code = reply::kSuccess + 7});
  area.RemovePackage(kFirst);
  area.RemoveFile(kFirst, file);
  EXPECT_TRUE(area.Files().removing.contains(file));
  ASSERT_TRUE(Await([&] { return failed.size() == 2; }));
  EXPECT_EQ(failed[0][0].toUInt(), 8199U);
  EXPECT_THAT(Rows(), ElementsAre(kSecond, kFirst));
  EXPECT_THAT(Files(), ElementsAre(file));
  EXPECT_THAT(area.Files().removing, IsEmpty());
  EXPECT_EQ(cache_.Names().size(), 1U);

  peer_.AddFault({.kind = Fault::Kind::Stall, .message = message::kRemoveFolder});
  area.RemovePackage(kFirst);
  ASSERT_TRUE(Await([&] { return Cell(kFirst, package_column::kStatus) == "Deleting…"; }));
  EXPECT_FALSE(area.IndexOf(kFirst, package_column::kName).flags() & Qt::ItemIsEditable);
  peer_.ForgetRequests();
  area.Cancel();
  ASSERT_TRUE(Await([&] { return Cell(kFirst, package_column::kStatus) == "Incomplete"; }));
  ASSERT_TRUE(Await([&] { return !area.Refreshing() && Settle(); }));
  EXPECT_EQ(Requests(message::kList), 2) << "listings tell what a removal that was cut has done";
  EXPECT_THAT(Rows(), ElementsAre(kSecond, kFirst));
  area.RemovePackage(kFirst);
  ASSERT_TRUE(Await([&] { return Rows() == Names{kSecond}; }));
  EXPECT_THAT(cache_.Names(), IsEmpty());
  EXPECT_EQ(failed.size(), 2);
}

// Neither is an outage: the reply was lost, the removal was not, and the service has answered.
TEST_F(PackageAreaTest, WhatHasGoneGoesHoweverThatIsLearned) {
  PackageArea& area = Listed({kFirst, kSecond, kThird});
  QSignalSpy failed(&area, &PackageArea::Failed);
  peer_.AddFault({.kind = Fault::Kind::DropInside, .message = message::kRemoveFolder});
  area.RemovePackage(kFirst);
  ASSERT_TRUE(Await([&] { return Rows() == Names{kThird, kSecond}; }));
  std::filesystem::remove_all(Served(kThird));
  area.Select(kThird);
  ASSERT_TRUE(Await([&] { return Rows() == Names{kSecond}; }));
  EXPECT_EQ(failed.size(), 0) << "somebody else has removed it";
  EXPECT_EQ(area.State(), Link::There);
}

TEST_F(PackageAreaTest, PackagesThatHaveComeStandOutUntilTheyAreSelected) {
  seenFile_ = cached_.File("seen");
  const auto bold = [this] {
    std::string packages;
    for (const std::string& name : Rows()) {
      packages += area_->IndexOf(name).data(Qt::FontRole).isValid() ? name.substr(13) : "";
    }
    return packages;
  };
  const auto restart = [&] {
    area_.reset();
    MakeArea();
    ASSERT_TRUE(Refresh());
  };
  Listed({kFirst, kSecond});
  EXPECT_EQ(bold(), "") << "at the very first start";
  AddPackage(kThird);
  AddPackage(kThird + "#");
  ASSERT_TRUE(Refresh());
  EXPECT_EQ(bold(), "3#3");
  area_->Select(kThird);
  EXPECT_EQ(bold(), "3#");
  std::filesystem::remove_all(Served(kFirst));
  restart();
  EXPECT_EQ(bold(), "3#");
  area_->Rename(kThird, kThird + "##");
  ASSERT_TRUE(Await([&] { return area_->IndexOf(kThird + "##").isValid(); }));
  AddPackage(kFirst);
  ASSERT_TRUE(Refresh());
  EXPECT_EQ(bold(), "13#") << "what has gone is forgotten";

  for (const std::string& damage :
       {std::string("seen 1\n\xFF\xFF\xFF\xFFx"), ReadFile(seenFile_).substr(0, 20)}) {
    area_.reset();
    WriteFile(seenFile_, damage);
    restart();
    EXPECT_EQ(bold(), "") << "as at the very first start";
  }
}

TEST_F(PackageAreaTest, RefreshesByItselfSilentlyAndAfterAWhileAway) {
  using std::chrono::milliseconds;
  PackageArea& area = Listed({kFirst}, {.refresh = milliseconds(150), .away = milliseconds(0)});
  AddPackage(kSecond);
  EXPECT_TRUE(Await([&] { return Rows().size() == 2; }));

  MakeArea({.away = milliseconds(30)});
  ASSERT_TRUE(Refresh());
  AddPackage(kThird);
  area.SetActive(false);
  area.SetActive(true);
  EXPECT_FALSE(area.Refreshing());
  area.SetActive(false);
  QTest::qWait(40);
  area.SetActive(true);
  EXPECT_TRUE(Await([&] { return Rows().size() == 3; }));
}

}  // namespace
}  // namespace updown::test
