#include <QLineEdit>

#include "tests/packages/views_world.h"

namespace updown::test {
namespace {

class Browsing : public ViewsWorld {
 protected:
  void EditLabel(QTreeWidgetItem* item, const QString& text) {
    tree_->editItem(item);
    auto* const editor = tree_->findChild<QLineEdit*>();
    ASSERT_NE(editor, nullptr);
    editor->setText(text);
    QTest::keyClick(editor, Qt::Key_Return);
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  Log Select(QTreeWidgetItem* item) {
    tree_->setCurrentItem(item);
    return TakeLog();
  }
  Log Refresh() {
    TakeLog();
    QTest::keyClick(Table(), Qt::Key_F5);
    return TakeLog();
  }
  void ClickHeading(int column) {
    QHeaderView* const header = Table()->header();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier,
                      QPoint(header->sectionViewportPosition(column) + 20, header->height() / 2));
  }
  static bool HasExpander(const QTreeWidgetItem* item) {
    return item->childIndicatorPolicy() == QTreeWidgetItem::ShowIndicator;
  }
};

TEST_F(Browsing, TheFirstListingComesByItselfAndShowsTheLastPackage) {
  AddPackage(kFirst);
  AddPackage(kSecond);
  area_.folders["/"].push_back({"other", kEntryFolder});
  area_.folders["/"].push_back({kThird, kEntryFile});
  ASSERT_TRUE(QTest::qWaitFor([this] { return Table()->SelectedRow() == 0; }, 5000));
  EXPECT_THAT(TakeLog(), ElementsAre("connect", "list /", "list /" + kSecond));
  EXPECT_EQ(Root()->childCount(), 2);
  EXPECT_TRUE(Root()->isExpanded());
  EXPECT_EQ(Senders(), "f2 f1 ");
  EXPECT_EQ(Cell(0, 4), "Completed");
  EXPECT_EQ(tree_->currentItem(), Package(1));
  EXPECT_THAT(AttachmentNames(), ElementsAre("of" + kSecond + ".txt"));
  EXPECT_THAT(Header(), StartsWith("From:   f2\t\t"));
}

TEST_F(Browsing, APackageKeepsItsExpanderUntilItIsVisited) {
  Start({kFirst, kSecond});
  EXPECT_TRUE(HasExpander(Package(0)));
  EXPECT_THAT(Select(Package(0)), ElementsAre("list /" + kFirst));
  EXPECT_FALSE(HasExpander(Package(0)));
  EXPECT_FALSE(Package(0)->isExpanded());
  EXPECT_THAT(AttachmentNames(), ElementsAre("of" + kFirst + ".txt"));
  EXPECT_THAT(Select(Root()), ElementsAre("list /"));
  EXPECT_THAT(AttachmentNames(), ElementsAre("of" + kFirst + ".txt"));
  EXPECT_EQ(Root()->childCount(), 2) << "only a refresh builds items again";
}

TEST_F(Browsing, TheExpanderAsksByMouseAndByKey) {
  Start({kFirst, kSecond});
  const QRect label = tree_->visualItemRect(Package(0));
  QTest::mouseClick(tree_->viewport(), Qt::LeftButton, Qt::NoModifier,
                    QPoint(label.left() - tree_->indentation() / 2, label.center().y()));
  EXPECT_THAT(TakeLog(), ElementsAre("list /" + kFirst, "list /" + kFirst));
  EXPECT_FALSE(Package(0)->isExpanded());

  Select(Root());
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
  area_.folders["/"].push_back({kSecond, kEntryFolder});
  const auto fetch = [](const std::string& package, const std::string& file) {
    return "fetch " + file + " from /" + package + "/" + file;
  };
  EXPECT_THAT(Start(),
              ElementsAre("connect", "list /", fetch(kFirst, kFirst + ".ini"),
                          fetch(kSecond, kSecond + ".ini"), fetch(kSecond, kSecond + "_Start.ini"),
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
  form_->Clear();
  EXPECT_FALSE(Attachments()->isVisible());
  EXPECT_THAT(Header(), StartsWith("From:   \t\t"));
  Table()->SelectRow(1);
  EXPECT_TRUE(Attachments()->isVisible());
}

TEST_F(Browsing, HeadingsSortAndARefreshBuildsAllAnew) {
  Start({kFirst, kSecond});
  ClickHeading(1);
  EXPECT_EQ(Senders(), "f1 f2 ");
  EXPECT_EQ(Table()->SelectedRow(), 1) << "the selection stays with its package";
  ClickHeading(1);
  EXPECT_EQ(Senders(), "f2 f1 ");

  AddPackage(kThird);
  ClickHeading(1);
  Refresh();
  EXPECT_EQ(Senders(), "f3 f2 f1 ");
  EXPECT_EQ(Table()->SelectedRow(), 0);
  EXPECT_EQ(tree_->currentItem(), Root());
  EXPECT_EQ(Root()->childCount(), 3);
  EXPECT_THAT(AttachmentNames(), ElementsAre("of" + kThird + ".txt"));
  EXPECT_TRUE(Table()->updatesEnabled());
}

TEST_F(Browsing, ASessionThatDiesInARefreshLeavesAnEmptyListThatTheNextOneFills) {
  Start({kFirst});
  const auto world = std::exchange(area_.folders, {});
  area_.session.sessid = "";
  EXPECT_THAT(Refresh(), ElementsAre("list /", "connect", "connect", "report 61205"));
  EXPECT_EQ(Senders(), "");
  EXPECT_EQ(Root()->childCount(), 0);
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);

  area_.folders = world;
  area_.session.sessid = "another";
  Refresh();
  EXPECT_EQ(Senders(), "f1 ");
}

TEST_F(Browsing, AnEmptyOrFailedFirstListingIsTriedAgain) {
  EXPECT_THAT(Start(), ElementsAre("connect", "list /", "connect"));
  area_.folders["/"] = {};
  Select(nullptr);
  Start();
  EXPECT_FALSE(HasExpander(Root()));
  ClickHeading(1);
  EXPECT_EQ(qobject_cast<CSortHeaderCtrl*>(Table()->header())->GetSortColumn(), -1);
  AddPackage(kFirst);
  Refresh();
  EXPECT_EQ(Senders(), "f1 ");
}

TEST_F(Browsing, ARenameStaysOnlyIfTheServiceAgrees) {
  Start({kFirst});
  const struct {
    QTreeWidgetItem* item;
    QString text;
    int answer;
    Log asked;
    QString shown;
  } cases[] = {
      {Package(0), u"Abc"_qs, 0, {"rename /" + kFirst + " to /Abc"}, u"Abc"_qs},
      {Package(0), u"def"_qs, -8199, {"rename /Abc to /def"}, u"Abc"_qs},
      {Package(0), QString(300, u'x'), 0, {"report 61249"}, u"Abc"_qs},
      {Package(0), u"aBC"_qs, 0, {}, u"Abc"_qs},  // another case is no other name
      {Root(), u"abc"_qs, 0, {}, u"/"_qs},
  };
  for (const auto& c : cases) {
    area_.rename = c.answer;
    EditLabel(c.item, c.text);
    EXPECT_EQ(TakeLog(), c.asked) << c.text.toStdString();
    EXPECT_EQ(c.item->text(0), c.shown);
  }
}

TEST_F(Browsing, NamesOfItemsThatAreGoneFindNothing) {
  Start({kFirst});
  const auto item = static_cast<TreeItem>(Package(0)->data(0, Qt::UserRole).toULongLong());
  tree_->DeleteItem(item);
  TakeLog();
  for (const TreeItem name : {item, TreeItem::None, TreeItem{999}}) {
    tree_->DeleteItem(name);
    tree_->SelectFromList(name);
  }
  EXPECT_EQ(Root()->childCount(), 0);
  EXPECT_THAT(TakeLog(), IsEmpty());
}

TEST_F(Browsing, HeadersAreReadInTheCodePageOfTheLanguage) {
  area_.folders["/"] = {{kFirst, kEntryFolder}};
  area_.folders["/" + kFirst] = {};
  const std::tuple<std::int32_t, const char*, const char*> cases[] = {
      {1033, "Ren\xE9", "René"}, {2052, "\xD6\xD0", "中"}, {1028, "\xA4\xA4", "中"}};
  for (const auto& [language, bytes, text] : cases) {
    launch_.languageId = language;
    Arrive(kFirst + "_Start.ini", bytes);
    Refresh();
    EXPECT_EQ(Cell(0, 1), text);
    EXPECT_THAT(Header(), ::testing::HasSubstr(text));
    EXPECT_EQ(Notes(), u"a\nb"_qs);
  }
}

}  // namespace
}  // namespace updown::test
