#include <gmock/gmock.h>

#include "tests/views/views_world.h"
#include "views/busy_pointer.h"

namespace updown::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kFirst = "20080115093011";
const std::string kSecond = "20080115093012";
const std::string kThird = "20080115093013";

class Deletion : public ViewsWorld {
 protected:
  Deletion() {
    for (const std::string& name : {kFirst, kSecond, kThird}) {
      AddPackage(name);
    }
    Start();
  }
  void Delete(int row) {
    Table()->SelectRow(row);
    TakeLog();
    Q_EMIT Table()->RowMenuRequested(row, QPoint());
    Choose(list_, u"packageMenu"_qs, 1);
  }
  bool Cached(const std::string& name) const {
    return frame_.Cache().IsPackageIniCached(name + ".ini") ||
           frame_.Cache().IsPackageIniCached(name + "_Start.ini");
  }
};

TEST_F(Deletion, TakesRowItemAndCacheAndShowsTheRowThatMovesUp) {
  Delete(1);
  EXPECT_THAT(boxes_, ElementsAre("Are you sure you want to make this deletion?"));
  EXPECT_EQ(TakeLog().front(), "remove /" + kSecond);
  EXPECT_EQ(Senders(), "f3 f1 ");
  EXPECT_EQ(Root()->childCount(), 2);
  EXPECT_FALSE(Cached(kSecond));
  EXPECT_TRUE(Cached(kFirst));
  EXPECT_EQ(Table()->SelectedRow(), 1);
  EXPECT_THAT(Header(), testing::StartsWith("From:   f1\t"));
  EXPECT_THAT(AttachmentNames(), ElementsAre("of" + kFirst + ".txt"));
  EXPECT_TRUE(window_.isEnabled() && list_->isEnabled());
}

TEST_F(Deletion, OfTheLastRowLeavesTheFormEmpty) {
  Delete(2);
  EXPECT_EQ(Senders(), "f3 f2 ");
  EXPECT_EQ(Table()->SelectedRow(), -1);
  EXPECT_THAT(Header(), testing::StartsWith("From:   \t"));
  EXPECT_THAT(AttachmentNames(), IsEmpty());
}

TEST_F(Deletion, ARefusalForWantOfRightsCountsAsDoneAnotherOneDoesNot) {
  frame_.removal = 8199;
  Delete(1);
  EXPECT_EQ(Senders(), "f3 f1 ");
  EXPECT_FALSE(Cached(kSecond));
  frame_.removal = 8200;
  Delete(1);
  EXPECT_EQ(Senders(), "f3 f1 ");
  EXPECT_EQ(Root()->childCount(), 2);
  EXPECT_TRUE(Cached(kFirst));
  EXPECT_THAT(Header(), testing::StartsWith("From:   f1\t")) << "the package is shown again";
}

TEST_F(Deletion, CancelChangesNothing) {
  answer_ = QMessageBox::Cancel;
  Delete(0);
  EXPECT_THAT(TakeLog(), IsEmpty());
  EXPECT_EQ(Senders(), "f3 f2 f1 ");
  EXPECT_THAT(AttachmentNames(), ElementsAre("of" + kThird + ".txt"));
}

class Saving : public ViewsWorld {
 protected:
  Saving() {
    AddPackage(kFirst);
    frame_.folders["/" + kFirst] = {{"b.txt", kEntryFile, 2, 200},
                                    {"A.txt", kEntryFile, 3, 100},
                                    {"../up", kEntryFile, 1, 300},
                                    {std::string(250, 'n'), kEntryFile},
                                    {"folder", kEntryFolder}};
    Start();
    TakeLog();
  }
  void Click(int row, int column, bool twice = false) {
    QWidget* const viewport = Attachments()->viewport();
    QPoint point = Attachments()->visualRect(Attachments()->model()->index(0, column)).center();
    point.setY(row < 0
                   ? viewport->height() - 5
                   : Attachments()->visualRect(Attachments()->model()->index(row, 0)).center().y());
    QTest::mouseClick(viewport, Qt::LeftButton, Qt::NoModifier, point);
    if (twice) {
      QTest::mouseDClick(viewport, Qt::LeftButton, Qt::NoModifier, point);
    }
  }
  void SortBy(int column) { Q_EMIT Attachments()->header()->sectionClicked(column); }
  const std::string folder_ = "/" + kFirst + "/";
};

TEST_F(Saving, StartsFromTheLinkADoubleClickAndEnter) {
  Click(1, 0);
  EXPECT_THAT(TakeLog(), IsEmpty());
  Click(0, 4);
  EXPECT_THAT(TakeLog(), ElementsAre("save b.txt from " + folder_ + "b.txt", "status window"));
  Click(1, 0, true);
  EXPECT_THAT(TakeLog(), ElementsAre("save A.txt from " + folder_ + "A.txt", "status window"));
  QTest::keyClick(Attachments(), Qt::Key_Return);
  EXPECT_EQ(TakeLog().size(), 2U);
  Click(-1, 4);
  EXPECT_THAT(TakeLog(), ElementsAre("status window"));
}

TEST_F(Saving, IsRefusedForDuplicatesAndBeyondTheLimit) {
  frame_.duplicate = true;
  Click(0, 4);
  EXPECT_THAT(TakeLog(), ElementsAre("status window"));
  frame_.duplicate = false;
  const TemporaryFolder disk;
  for (int i = 0; i < 5; ++i) {
    TaskDraft draft;
    draft.displayName = "x";
    draft.remotePath = "/" + std::to_string(i);
    frame_.Tasks().AddDownload(draft, disk.File("x"), true, frame_.FrameWindow());
  }
  Click(0, 4);
  EXPECT_THAT(TakeLog(), ElementsAre("status window"));
  EXPECT_EQ(boxes_.size(), 1U);
}

TEST_F(Saving, UsesNoNameToLeaveItsPlace) {
  Click(2, 4);
  EXPECT_THAT(TakeLog(), ElementsAre("save up from " + folder_ + "../up", "status window"));
  Click(3, 4);
  EXPECT_THAT(TakeLog(), ElementsAre("report 61249", "status window")) << "the path does not fit";
}

TEST_F(Saving, AsksUnderTheFolderThatWasListedLast) {
  tree_->setCurrentItem(Root());
  TakeLog();
  Click(0, 4);
  EXPECT_EQ(TakeLog().front(), "save b.txt from /b.txt");
}

TEST_F(Saving, DeletesAFileOnlyIfTheServiceDoes) {
  const auto remove = [this](int row) {
    Attachments()->SelectRow(row);
    Q_EMIT Attachments()->RowMenuRequested(row, QPoint());
    Choose(form_, u"attachmentMenu"_qs, 1);
  };
  frame_.removal = -8199;
  remove(0);
  EXPECT_THAT(TakeLog(), ElementsAre("remove " + folder_ + "b.txt"));
  EXPECT_EQ(AttachmentNames().size(), 4U);
  remove(2);
  EXPECT_THAT(TakeLog(), ElementsAre("report 61237")) << "it could lie in another folder";
  frame_.removal = 0;
  remove(0);
  EXPECT_EQ(AttachmentNames().front(), "A.txt");
  EXPECT_EQ(Attachments()->SelectedRow(), -1);
  EXPECT_THAT(ToUtf8(Attachments()->GetCellTip(0, 0)), testing::StartsWith("Name:A.txt"));
  answer_ = QMessageBox::Cancel;
  TakeLog();
  remove(0);
  EXPECT_THAT(TakeLog(), IsEmpty());
}

TEST_F(Saving, SortsByTheHiddenHeaderAndTurnsAroundEachTime) {
  const std::string longName(250, 'n');
  SortBy(0);
  EXPECT_THAT(AttachmentNames(), ElementsAre(longName, "b.txt", "A.txt", "../up"));
  SortBy(0);
  EXPECT_THAT(AttachmentNames(), ElementsAre("../up", "A.txt", "b.txt", longName));
  EXPECT_THAT(ToUtf8(Attachments()->GetCellTip(2, 0)), testing::StartsWith("Name:b.txt"));
  SortBy(1);
  EXPECT_THAT(AttachmentNames(), ElementsAre(longName, "A.txt", "b.txt", "../up"));
  SortBy(3);
  EXPECT_THAT(AttachmentNames(), ElementsAre(longName, "A.txt", "b.txt", "../up"));
}

TEST(BusyPointer, StepsBackWhileABoxWaits) {
  const auto shape = [] {
    const QCursor* const cursor = QApplication::overrideCursor();
    return cursor == nullptr ? -1 : static_cast<int>(cursor->shape());
  };
  {
    const BusyPointer outer;
    const BusyPointer inner;
    EXPECT_EQ(shape(), Qt::WaitCursor);
    QMessageBox box;
    QTimer soon;
    soon.setSingleShot(true);
    QObject::connect(&soon, &QTimer::timeout, &box, [&] {
      EXPECT_EQ(shape(), -1);
      box.accept();
    });
    soon.start(0);
    box.exec();
    EXPECT_EQ(shape(), Qt::WaitCursor);
  }
  EXPECT_EQ(shape(), -1);
}

}  // namespace
}  // namespace updown::test
