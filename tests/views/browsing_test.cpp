#include <gmock/gmock.h>

#include <QDropEvent>
#include <QLineEdit>
#include <QMimeData>

#include "tests/views/views_world.h"

namespace updown::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kFirst = "20080115093011";
const std::string kSecond = "20080115093012";

class Browsing : public ViewsWorld {
 protected:
  QTreeWidgetItem* Package(int index) const { return Root()->child(index); }
  void EditLabel(QTreeWidgetItem* item, const QString& text) {
    tree_->editItem(item);
    auto* const editor = tree_->findChild<QLineEdit*>();
    ASSERT_NE(editor, nullptr);
    editor->setText(text);
    QTest::keyClick(editor, Qt::Key_Return);
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  void ClickHeading(int column) {
    QHeaderView* const header = Table()->header();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier,
                      QPoint(header->sectionViewportPosition(column) + 20, header->height() / 2));
  }
  void SendToForm(std::uint32_t number, const std::u16string& text) {
    SendWindowMessage(form_->Handle(), number, 0, PointerParam(&text));
  }
};

TEST_F(Browsing, TheFirstListingComesByItselfAndShowsTheLastPackage) {
  AddPackage(kFirst);
  AddPackage(kSecond);
  frame_.folders["/"].push_back({"other", kEntryFolder});
  frame_.folders["/"].push_back({"20080115093099", kEntryFile});
  ASSERT_TRUE(QTest::qWaitFor([this] { return Table()->SelectedRow() == 0; }, 5000));
  EXPECT_THAT(TakeLog(), ElementsAre("connect", "list /", "list /" + kSecond));
  EXPECT_EQ(Root()->childCount(), 2);
  EXPECT_TRUE(Root()->isExpanded());
  EXPECT_EQ(Senders(), "f2 f1 ");
  EXPECT_EQ(Cell(0, 4), "Completed");
  EXPECT_EQ(tree_->currentItem(), Package(1));
  EXPECT_THAT(AttachmentNames(), ElementsAre("of" + kSecond + ".txt"));
  EXPECT_THAT(Header(), testing::StartsWith("From:   f2\t\t"));
  EXPECT_EQ(form_->findChild<QPlainTextEdit*>()->toPlainText(), u"a\nb"_qs);
}

TEST_F(Browsing, APackageKeepsItsExpanderUntilItIsVisited) {
  AddPackage(kFirst);
  AddPackage(kSecond);
  Start();
  TakeLog();
  EXPECT_EQ(Package(0)->childIndicatorPolicy(), QTreeWidgetItem::ShowIndicator);
  tree_->setCurrentItem(Package(0));
  EXPECT_THAT(TakeLog(), ElementsAre("list /" + kFirst));
  EXPECT_NE(Package(0)->childIndicatorPolicy(), QTreeWidgetItem::ShowIndicator);
  EXPECT_FALSE(Package(0)->isExpanded());
  EXPECT_THAT(AttachmentNames(), ElementsAre("of" + kFirst + ".txt"));

  tree_->setCurrentItem(Root());
  EXPECT_THAT(TakeLog(), ElementsAre("list /"));
  EXPECT_THAT(AttachmentNames(), ElementsAre("of" + kFirst + ".txt"));
  EXPECT_EQ(Root()->childCount(), 2) << "only a refresh builds items again";
}

TEST_F(Browsing, TheExpanderAsksByMouseAndByKey) {
  AddPackage(kFirst);
  AddPackage(kSecond);
  Start();
  TakeLog();
  const QRect label = tree_->visualItemRect(Package(0));
  QTest::mouseClick(tree_->viewport(), Qt::LeftButton, Qt::NoModifier,
                    QPoint(label.left() - tree_->indentation() / 2, label.center().y()));
  EXPECT_THAT(TakeLog(), ElementsAre("list /" + kFirst, "list /" + kFirst));
  EXPECT_FALSE(Package(0)->isExpanded());

  tree_->setCurrentItem(Root());
  TakeLog();
  QTest::keyClick(tree_, Qt::Key_Left);
  EXPECT_THAT(TakeLog(), ElementsAre("list /"));
  EXPECT_FALSE(Root()->isExpanded());
  QTest::mouseDClick(tree_->viewport(), Qt::LeftButton, Qt::NoModifier,
                     tree_->visualItemRect(Root()).center());
  EXPECT_THAT(TakeLog(), ElementsAre("list /"));
  EXPECT_TRUE(Root()->isExpanded());
}

TEST_F(Browsing, MissingHeadersAreFetchedOnceForEachFile) {
  AddPackage(kFirst, false);
  frame_.folders["/"].push_back({kSecond, kEntryFolder});
  Start();
  EXPECT_THAT(
      TakeLog(),
      ElementsAre("connect", "list /",
                  "fetch " + kFirst + ".ini from /" + kFirst + "/" + kFirst + ".ini",
                  "fetch " + kSecond + ".ini from /" + kSecond + "/" + kSecond + ".ini",
                  "fetch " + kSecond + "_Start.ini from /" + kSecond + "/" + kSecond + "_Start.ini",
                  "list /" + kSecond, "connect"))
      << "a listing that fails opens the session anew";
  EXPECT_EQ(Senders(), " f1 ");
  EXPECT_EQ(Cell(0, 4), "Incomplete");

  Arrive(kSecond + ".ini", "");
  list_->RefreshHeaderlessRows();
  Arrive(kSecond + "_Start.ini", "late");
  list_->RefreshHeaderlessRows();
  ASSERT_TRUE(QTest::qWaitFor([this] { return Cell(0, 1) == "late"; }, 5000));
  EXPECT_EQ(Cell(0, 4), "Completed");
  Arrive(kFirst + ".ini", "changed");
  list_->RefreshHeaderlessRows();
  EXPECT_EQ(Cell(1, 4), "Incomplete") << "a row with a sender waits for its selection";
  Table()->SelectRow(1);
  EXPECT_EQ(Cell(1, 4), "Completed");
}

TEST_F(Browsing, AHalfArrivedPackageHidesItsAttachmentsUntilACompleteOneIsShown) {
  AddPackage(kFirst);
  AddPackage(kSecond, false);
  EXPECT_TRUE(Attachments()->isVisible()) << "before the first package";
  Start();
  EXPECT_FALSE(Attachments()->isVisible());
  EXPECT_THAT(AttachmentNames(), ElementsAre("of" + kSecond + ".txt"));
  SendToForm(frame_message::kShowPackage, u"");
  EXPECT_FALSE(Attachments()->isVisible());
  EXPECT_THAT(Header(), testing::StartsWith("From:   \t\t"));
  Table()->SelectRow(1);
  EXPECT_TRUE(Attachments()->isVisible());
}

TEST_F(Browsing, ARefreshBuildsAllAnewAndShowsTheTopRow) {
  AddPackage(kFirst);
  Start();
  AddPackage(kSecond);
  ClickHeading(1);
  TakeLog();
  QTest::keyClick(Table(), Qt::Key_F5);
  EXPECT_EQ(Senders(), "f2 f1 ");
  EXPECT_EQ(Table()->SelectedRow(), 0);
  EXPECT_EQ(tree_->currentItem(), Root());
  EXPECT_EQ(Root()->childCount(), 2);
  EXPECT_THAT(AttachmentNames(), ElementsAre("of" + kSecond + ".txt"));
  EXPECT_TRUE(Table()->updatesEnabled());
}

TEST_F(Browsing, ASecondClickOnAHeadingTurnsTheOrderAround) {
  AddPackage(kFirst);
  AddPackage(kSecond);
  Start();
  ClickHeading(1);
  EXPECT_EQ(Senders(), "f1 f2 ");
  EXPECT_EQ(Table()->SelectedRow(), 1) << "the selection stays with its package";
  ClickHeading(1);
  EXPECT_EQ(Senders(), "f2 f1 ");
}

TEST_F(Browsing, ASessionThatDiesInARefreshLeavesAnEmptyListThatTheNextOneFills) {
  AddPackage(kFirst);
  Start();
  const auto world = std::exchange(frame_.folders, {});
  frame_.reachable = false;
  TakeLog();
  QTest::keyClick(Table(), Qt::Key_F5);
  EXPECT_THAT(TakeLog(), ElementsAre("list /", "report 61205"));
  EXPECT_EQ(Rows(), 0);
  EXPECT_EQ(Root()->childCount(), 0);
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);

  frame_.folders = world;
  frame_.reachable = true;
  QTest::keyClick(Table(), Qt::Key_F5);
  EXPECT_EQ(Senders(), "f1 ");
}

TEST_F(Browsing, WithoutPackagesTheRootLosesItsExpander) {
  frame_.folders["/"] = {};
  Start();
  EXPECT_NE(Root()->childIndicatorPolicy(), QTreeWidgetItem::ShowIndicator);
  EXPECT_EQ(Rows(), 0);
  ClickHeading(1);
  EXPECT_EQ(qobject_cast<CSortHeaderCtrl*>(Table()->header())->GetSortColumn(), -1);
}

TEST_F(Browsing, AFailedFirstListingIsTriedAgainByTheNextSelection) {
  Start();
  EXPECT_THAT(TakeLog(), ElementsAre("connect", "list /", "connect"));
  AddPackage(kFirst);
  tree_->setCurrentItem(nullptr);
  Start();
  EXPECT_EQ(Senders(), "f1 ");
}

TEST_F(Browsing, ARenameStaysOnlyIfTheServiceAgrees) {
  AddPackage(kFirst);
  Start();
  TakeLog();
  EditLabel(Package(0), u"20080115093019"_qs);
  EXPECT_THAT(TakeLog(), ElementsAre("rename /" + kFirst + " to /20080115093019"));
  EXPECT_EQ(Package(0)->text(0), u"20080115093019"_qs);

  frame_.rename = -8199;
  EditLabel(Package(0), u"abc"_qs);
  EXPECT_THAT(TakeLog(), ElementsAre("rename /20080115093019 to /abc"));
  EXPECT_EQ(Package(0)->text(0), u"20080115093019"_qs);
  EditLabel(Root(), u"abc"_qs);
  EXPECT_EQ(Root()->text(0), u"/"_qs);
  TakeLog();
  EditLabel(Package(0), QString(300, u'x'));
  EXPECT_THAT(TakeLog(), ElementsAre("report 61249"));

  frame_.rename = 0;
  EditLabel(Package(0), u"Abc"_qs);
  TakeLog();
  EditLabel(Package(0), u"aBC"_qs);
  EXPECT_THAT(TakeLog(), IsEmpty()) << "another case is no other name";
  EXPECT_EQ(Package(0)->text(0), u"Abc"_qs);
}

TEST_F(Browsing, ADropIsTakenAsACopyAndDoesNothing) {
  AddPackage(kFirst);
  Start();
  TakeLog();
  QMimeData files;
  files.setUrls({QUrl::fromLocalFile(u"/somewhere"_qs)});
  QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction | Qt::MoveAction, &files, Qt::LeftButton,
                        Qt::NoModifier);
  QCoreApplication::sendEvent(tree_->viewport(), &enter);
  QDropEvent drop(QPointF(5, 5), Qt::CopyAction | Qt::MoveAction, &files, Qt::LeftButton,
                  Qt::NoModifier);
  QCoreApplication::sendEvent(tree_->viewport(), &drop);
  EXPECT_TRUE(drop.isAccepted());
  EXPECT_EQ(drop.dropAction(), Qt::CopyAction);
  EXPECT_THAT(TakeLog(), IsEmpty());
  EXPECT_EQ(Root()->childCount(), 1);
}

TEST_F(Browsing, NamesOfItemsThatAreGoneFindNothing) {
  AddPackage(kFirst);
  Start();
  const LongParam item = Package(0)->data(0, Qt::UserRole).toLongLong();
  SendWindowMessage(tree_->Handle(), frame_message::kDeleteItem, 0, item);
  TakeLog();
  for (const LongParam name : {item, LongParam{0}, LongParam{-1}, LongParam{12345}}) {
    SendWindowMessage(tree_->Handle(), frame_message::kDeleteItem, 0, name);
    SendWindowMessage(tree_->Handle(), frame_message::kSelectItem, 0, name);
  }
  EXPECT_EQ(Root()->childCount(), 0);
  EXPECT_THAT(TakeLog(), IsEmpty());
}

TEST_F(Browsing, HeadersAreReadInTheCodePageOfTheLanguage) {
  frame_.folders["/"] = {{kFirst, kEntryFolder}};
  frame_.folders["/" + kFirst] = {};
  struct Case {
    std::int32_t language;
    const char* bytes;
    const char* text;
  };
  const Case cases[] = {
      {1033, "Ren\xE9", "René"}, {2052, "\xD6\xD0", "中"}, {1028, "\xA4\xA4", "中"}};
  for (const Case& c : cases) {
    frame_.launch.languageId = c.language;
    Arrive(kFirst + "_Start.ini", c.bytes);
    QTest::keyClick(Table(), Qt::Key_F5);
    EXPECT_EQ(Cell(0, 1), c.text);
    EXPECT_THAT(Header(), testing::HasSubstr(c.text));
    EXPECT_EQ(form_->findChild<QPlainTextEdit*>()->toPlainText(), u"a\nb"_qs);
  }
}

}  // namespace
}  // namespace updown::test
