#include "tests/packages/views_world.h"

namespace updown::test {
namespace {

struct DeletionCase {
  const char* name;
  int row;
  QMessageBox::StandardButton answer;
  int removal;
  const char* senders;  // afterwards
  const char* shown;    // the sender that the form shows
  int selected;
};

class Deletion : public ViewsWorld, public ::testing::WithParamInterface<DeletionCase> {};

INSTANTIATE_TEST_SUITE_P(
    Packages, Deletion,
    ::testing::Values(DeletionCase{"Middle", 1, QMessageBox::Ok, 0, "f3 f1 ", "f1", 1},
                      DeletionCase{"Last", 2, QMessageBox::Ok, 0, "f3 f2 ", "", -1},
                      DeletionCase{"WithoutRights", 1, QMessageBox::Ok, 8199, "f3 f1 ", "f1", 1},
                      DeletionCase{"Busy", 1, QMessageBox::Ok, 8200, "f3 f2 f1 ", "f2", 1},
                      DeletionCase{"Cancelled", 0, QMessageBox::Cancel, 0, "f3 f2 f1 ", "f3", 0}),
    [](const auto& each) { return std::string(each.param.name); });

TEST_P(Deletion, TakesRowItemAndCacheAndShowsTheRowThatMovesUp) {
  const DeletionCase& c = GetParam();
  const std::string deleted = std::vector{kThird, kSecond, kFirst}.at(c.row);
  const bool goes = c.senders != std::string("f3 f2 f1 ");
  Start({kFirst, kSecond, kThird});
  person_.answer = c.answer;
  area_.removal = c.removal;
  DeleteByMenu(Table(), c.row, u"packageMenu"_qs);
  EXPECT_THAT(person_.seen, ElementsAre("Are you sure you want to make this deletion?"));
  const Log asked = TakeLog();
  EXPECT_EQ(asked.empty(), c.answer == QMessageBox::Cancel);
  EXPECT_TRUE(asked.empty() || asked.front() == "remove /" + deleted);
  EXPECT_EQ(Senders(), c.senders);
  EXPECT_EQ(Root()->childCount(), goes ? 2 : 3);
  EXPECT_EQ(cache_.IsPackageIniCached(deleted + ".ini"), !goes);
  EXPECT_EQ(cache_.IsPackageIniCached(deleted + "_Start.ini"), !goes);
  EXPECT_EQ(Table()->SelectedRow(), c.selected);
  EXPECT_THAT(Header(), StartsWith(std::string("From:   ") + c.shown + "\t"));
  EXPECT_EQ(AttachmentNames().size(), c.selected < 0 ? 0U : 1U);
  EXPECT_TRUE(window_.isEnabled() && list_->isEnabled());
}

class Saving : public ViewsWorld {
 protected:
  Saving() {
    AddPackage(kFirst);
    area_.folders["/" + kFirst] = {{"b.txt", kEntryFile, 2, 200},
                                   {"A.txt", kEntryFile, 3, 100},
                                   {"../up", kEntryFile, 1, 300},
                                   {longName_, kEntryFile},
                                   {"folder", kEntryFolder}};
    Start();
  }
  void Click(int row, int column, bool twice = false) {
    CLinkListCtrl& list = *Attachments();
    QPoint point = list.visualRect(list.model()->index(0, column)).center();
    point.setY(row < 0 ? list.viewport()->height() - 5
                       : list.visualRect(list.model()->index(row, 0)).center().y());
    QTest::mouseClick(list.viewport(), Qt::LeftButton, Qt::NoModifier, point);
    if (twice) {
      QTest::mouseDClick(list.viewport(), Qt::LeftButton, Qt::NoModifier, point);
    }
  }
  // What a click on a Save link asks for.
  Log Save(int row) {
    Click(row, 4);
    return TakeLog();
  }
  void Delete(int row) { DeleteByMenu(Attachments(), row, u"attachmentMenu"_qs); }

  const std::string longName_ = std::string(250, 'n');
  const std::string folder_ = "/" + kFirst + "/";
};

TEST_F(Saving, StartsFromTheLinkADoubleClickAndEnter) {
  Click(1, 0);
  EXPECT_THAT(TakeLog(), IsEmpty());
  EXPECT_THAT(Save(0), ElementsAre("save b.txt from " + folder_ + "b.txt", "status window"));
  Click(1, 0, true);
  EXPECT_THAT(TakeLog(), ElementsAre("save A.txt from " + folder_ + "A.txt", "status window"));
  QTest::keyClick(Attachments(), Qt::Key_Return);
  EXPECT_EQ(TakeLog().size(), 2U);
  EXPECT_THAT(Save(-1), ElementsAre("status window"));
}

TEST_F(Saving, IsRefusedForDuplicatesAndBeyondTheLimit) {
  area_.duplicate = true;
  EXPECT_THAT(Save(0), ElementsAre("status window"));
  area_.duplicate = false;
  area_.limitReached = true;
  EXPECT_THAT(Save(0), ElementsAre("status window"));
  EXPECT_EQ(person_.seen.size(), 1U);
}

TEST_F(Saving, UsesNoNameToLeaveItsPlaceAndAsksUnderTheFolderListedLast) {
  EXPECT_THAT(Save(2), ElementsAre("save up from " + folder_ + "../up", "status window"));
  EXPECT_THAT(Save(3), ElementsAre("report 61249", "status window")) << "the path does not fit";
  tree_->setCurrentItem(Root());
  TakeLog();
  EXPECT_EQ(Save(0).front(), "save b.txt from /b.txt");
}

TEST_F(Saving, DeletesAFileOnlyIfTheServiceDoes) {
  area_.removal = -8199;
  Delete(0);
  EXPECT_THAT(TakeLog(), ElementsAre("remove " + folder_ + "b.txt"));
  EXPECT_EQ(AttachmentNames().size(), 4U);
  Delete(2);
  EXPECT_THAT(TakeLog(), ElementsAre("report 61237")) << "it could lie in another folder";
  area_.removal = 0;
  Delete(0);
  EXPECT_EQ(AttachmentNames().front(), "A.txt");
  EXPECT_EQ(Attachments()->SelectedRow(), -1);
  EXPECT_THAT(ToUtf8(Attachments()->GetCellTip(0, 0)), StartsWith("Name:A.txt"));
  person_.answer = QMessageBox::Cancel;
  Delete(0);
  EXPECT_THAT(TakeLog(), IsEmpty());
}

TEST_F(Saving, SortsByTheHiddenHeaderAndTurnsAroundEachTime) {
  const std::pair<int, Log> steps[] = {{0, {longName_, "b.txt", "A.txt", "../up"}},
                                       {0, {"../up", "A.txt", "b.txt", longName_}},
                                       {1, {longName_, "A.txt", "b.txt", "../up"}},
                                       {3, {longName_, "A.txt", "b.txt", "../up"}}};
  for (const auto& [column, names] : steps) {
    Q_EMIT Attachments()->header()->sectionClicked(column);
    EXPECT_EQ(AttachmentNames(), names) << column;
    EXPECT_THAT(ToUtf8(Attachments()->GetCellTip(2, 0)), StartsWith("Name:" + names[2]));
  }
}

}  // namespace
}  // namespace updown::test
