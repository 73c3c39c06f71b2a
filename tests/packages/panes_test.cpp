// Tree, list and form over one area.
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QSplitter>

#include "packages/file_type_names.h"
#include "packages/package_commands.h"
#include "packages/package_form.h"
#include "packages/package_pane.h"
#include "packages/package_tree.h"
#include "tests/packages/area_world.h"
#include "tests/support/person.h"

namespace updown::test {
namespace {

class NotedDownloads : public PackageDownloads {
 public:
  bool StreamLimitReached() const override { return limit; }
  bool IsDuplicate(const std::string& /*path*/) const override { return duplicate; }
  bool SaveFile(const std::string& name, const std::string& path) override {
    return SavePackage(name + " from " + path);
  }
  bool SavePackage(const std::string& package) override {
    saved.push_back(package);
    return true;
  }
  bool limit = false;
  bool duplicate = false;
  Names saved;
};

class PanesTest : public AreaWorld {
 protected:
  void Show(AreaTimes times = {}) {
    PackageArea& area = MakeArea(times);
    window_.emplace();
    window_->resize(2400, 700);
    commands_ = new PackageCommands(area, downloads_, &*window_);
    tree_ = new PackageTree(area, *commands_);
    pane_ = new PackagePane(area, *commands_, u"the service"_qs);
    list_ = &pane_->List();
    form_ = new PackageForm(area, *commands_);
    window_->addWidget(tree_);
    window_->addWidget(pane_);
    window_->addWidget(form_);
    QObject::connect(commands_, &PackageCommands::TransfersWanted, commands_,
                     [this] { ++transfersShown_; });
    window_->show();
    window_->activateWindow();
  }
  // With its packages listed: complete ones, from "f" + the name's last digit.
  void ShowListed(const Names& packages) {
    for (const std::string& name : packages) {
      AddPackage(name);
      PutIntoCache(HeaderFileOf(name, true), std::string("f") + name.back());
      PutIntoCache(HeaderFileOf(name, false), "other");
    }
    Show();
    ASSERT_TRUE(Refresh(AskedBy::Program));
    ASSERT_TRUE(Settle());
  }
  bool Settle() {
    return Await(
        [this] { return !session_->Busy() && area_->Files().state != PackageFiles::State::Asked; });
  }
  ~PanesTest() override { window_.reset(); }

  AttachmentList& Attachments() { return form_->Attachments(); }
  // The list's column of senders, top row first.
  std::string Senders() const {
    std::string senders;
    for (int row = 0; row < list_->RowCount(); ++row) {
      senders += ToUtf8(list_->CellAt(row, package_column::kFrom).data().toString()) + " ";
    }
    return senders;
  }
  Names AttachmentNames() {
    Names names;
    for (int row = 0; row < Attachments().RowCount(); ++row) {
      names.push_back(ToUtf8(Attachments().CellAt(row, 0).data().toString()));
    }
    return names;
  }
  std::string From() const { return ToUtf8(form_->findChild<QLineEdit*>(u"fieldFrom"_qs)->text()); }
  QModelIndex TreeItem(int package) const {
    return tree_->model()->index(package, 0, tree_->model()->index(0, 0));
  }
  static void Click(QAbstractItemView* view, const QModelIndex& index, bool twice = false) {
    const QPoint at = view->visualRect(index).center();
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, at);
    if (twice) {
      QTest::mouseDClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, at);
    }
  }
  void DeleteRow(RowListView* list, int row, const QString& action) {
    list->SelectRow(row);
    ASSERT_TRUE(Settle());
    list->findChild<QAction*>(action)->trigger();
    ASSERT_TRUE(Settle());
  }
  void DeleteFile(int row) { DeleteRow(&Attachments(), row, u"deleteFiles"_qs); }
  void EditLabel(const QString& text) {
    tree_->edit(tree_->currentIndex());
    auto* const editor = tree_->findChild<QLineEdit*>();
    ASSERT_NE(editor, nullptr);
    editor->setText(text);
    QTest::keyClick(editor, Qt::Key_Return);
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    ASSERT_TRUE(Settle());
  }

  NotedDownloads downloads_;
  Person person_;
  std::optional<QSplitter> window_;
  PackageTree* tree_ = nullptr;
  PackagePane* pane_ = nullptr;
  PackageList* list_ = nullptr;
  PackageForm* form_ = nullptr;
  PackageCommands* commands_ = nullptr;
  int transfersShown_ = 0;
};

TEST_F(PanesTest, AllShowOneSelection) {
  ShowListed({kFirst, kSecond, kThird});
  EXPECT_EQ(area_->Selected(), kThird) << "the first row shows itself";
  EXPECT_EQ(tree_->currentIndex(), TreeItem(0));
  EXPECT_THAT(AttachmentNames(), ElementsAre("of" + kThird + ".txt"));
  EXPECT_EQ(From(), "f3");
  EXPECT_EQ(form_->findChild<QPlainTextEdit*>()->toPlainText(), u"a\nb"_qs);

  Click(tree_, TreeItem(1));
  EXPECT_EQ(list_->SelectedRow(), 1);
  EXPECT_EQ(From(), "f2");
  EXPECT_THAT(AttachmentNames(), IsEmpty()) << "not those of another package";
  ASSERT_TRUE(Settle());
  EXPECT_THAT(AttachmentNames(), ElementsAre("of" + kSecond + ".txt"));

  Click(list_, list_->CellAt(2, 0));
  EXPECT_EQ(tree_->currentIndex(), TreeItem(2));
  Click(tree_, tree_->model()->index(0, 0));
  EXPECT_EQ(area_->Selected(), kFirst) << "the root is no package";
}

TEST_F(PanesTest, ARefreshKeepsSortingSelectionAndTheFilesOnShow) {
  ShowListed({kFirst, kSecond});
  EXPECT_EQ(Senders(), "f2 f1 ");
  list_->sortByColumn(package_column::kFrom, Qt::AscendingOrder);
  EXPECT_EQ(Senders(), "f1 f2 ");
  EXPECT_EQ(list_->SelectedRow(), 1) << "the selection stays with its package";
  AddPackage(kThird);
  PutIntoCache(HeaderFileOf(kThird, true), "f0");
  area_->Refresh(AskedBy::Person);
  EXPECT_EQ(Senders(), "f1 f2 ") << "until the answer is there";
  EXPECT_EQ(AttachmentNames().size(), 1U);
  ASSERT_TRUE(Await([this] { return Senders() == "f0 f1 f2 "; }));
  EXPECT_EQ(list_->SelectedRow(), 2);
  ASSERT_TRUE(Settle());
  Click(&Attachments(), Attachments().CellAt(0, attachment_column::kSave));
  EXPECT_THAT(downloads_.saved,
              ElementsAre("of" + kSecond + ".txt from /" + kSecond + "/of" + kSecond + ".txt"));
  list_->sortByColumn(package_column::kFrom, Qt::DescendingOrder);
  EXPECT_EQ(Senders(), "f2 f1 f0 ");
  Arrive(kFirst, "f9");
  EXPECT_EQ(Senders(), "f9 f2 f0 ");
}

TEST_F(PanesTest, AHalfArrivedPackageHidesItsAttachments) {
  AddPackage(kFirst);
  Show();
  EXPECT_TRUE(Attachments().isVisible()) << "before the first package";
  ASSERT_TRUE(Refresh());
  EXPECT_FALSE(Attachments().isVisible());
  EXPECT_EQ(From(), "");
  Arrive(kFirst, "late");
  EXPECT_TRUE(Attachments().isVisible());
  EXPECT_EQ(From(), "late");
}

TEST_F(PanesTest, TheEmptyListSaysWhatIsTrue) {
  Show({.quiet = std::chrono::milliseconds(50)});
  const auto hint = [this] { return ToUtf8(list_->accessibleDescription()); };
  peer_.AddFault({.kind = Fault::Kind::Stall, .message = message::kList});
  area_->Refresh(AskedBy::Program);
  EXPECT_EQ(hint(), "") << "not yet";
  const QSignalSpy failed(&*area_, &PackageArea::Failed);
  ASSERT_TRUE(Await([&] { return hint() == "Connecting to the service…"; }));
  area_->Cancel();
  ASSERT_TRUE(Await([&] { return hint().starts_with("Not connected to the service"); }));
  EXPECT_EQ(failed.size(), 0) << "the person knows";
  ASSERT_TRUE(Refresh());
  EXPECT_THAT(hint(), ::testing::HasSubstr("No packages have been received"));
}

TEST_F(PanesTest, ALineFiltersTheListAndEscapeShowsAllAgain) {
  ShowListed({kFirst, kSecond, kThird});
  list_->SelectRow(1);
  ASSERT_TRUE(Settle());
  pane_->Find();
  auto* const line = pane_->findChild<QLineEdit*>();
  ASSERT_TRUE(line->hasFocus());
  QTest::keyClicks(line, u"F2"_qs);
  EXPECT_EQ(Senders(), "f2 ");
  EXPECT_EQ(From(), "f2");
  QTest::keyClick(line, Qt::Key_Backspace);
  QTest::keyClicks(line, u"3"_qs);
  EXPECT_EQ(Senders(), "f3 ");
  EXPECT_EQ(area_->Selected(), "") << "nobody has chosen the row that is left";
  QTest::keyClicks(line, u"x"_qs);
  EXPECT_EQ(ToUtf8(list_->accessibleDescription()), "No package contains this text.");
  QTest::keyClick(line, Qt::Key_Escape);
  EXPECT_EQ(Senders(), "f3 f2 f1 ");
  EXPECT_FALSE(line->isVisible());
  EXPECT_TRUE(list_->hasFocus());
}

TEST_F(PanesTest, TheSelectedRowStaysInViewWhileHeadersMoveIt) {
  Names packages;
  for (int i = 10; i < 90; ++i) {
    packages.push_back("200801150930" + std::to_string(i));
  }
  ShowListed(packages);
  list_->sortByColumn(package_column::kFrom, Qt::AscendingOrder);
  list_->SelectRow(0);
  Arrive(area_->Selected(), "z");
  EXPECT_EQ(list_->SelectedRow(), list_->RowCount() - 1);
  const QRect row = list_->visualRect(list_->CellAt(list_->SelectedRow(), 0));
  EXPECT_TRUE(list_->viewport()->rect().contains(row.center()));
  list_->verticalScrollBar()->setValue(0);
  Arrive(packages[40], "y");
  EXPECT_EQ(list_->verticalScrollBar()->value(), 0) << "who looks elsewhere is left there";
}

TEST_F(PanesTest, ADeletionShowsTheRowThatMovesUp) {
  const struct {
    int row;
    QMessageBox::StandardButton answer;
    const char* senders;  // afterwards
    const char* shown;    // the sender that the form shows
  } cases[] = {{0, QMessageBox::Cancel, "f3 f2 f1 ", "f3"},
               {1, QMessageBox::Ok, "f3 f1 ", "f1"},
               {1, QMessageBox::Ok, "f3 ", ""}};
  ShowListed({kFirst, kSecond, kThird});
  for (const auto& c : cases) {
    person_.answer = c.answer;
    DeleteRow(list_, c.row, u"deletePackage"_qs);
    EXPECT_EQ(Senders(), c.senders);
    EXPECT_EQ(From(), c.shown);
    EXPECT_EQ(AttachmentNames().size(), From().empty() ? 0U : 1U);
  }
  EXPECT_THAT(person_.seen[1], StartsWith("Delete the package “" + kSecond + "” with its file"));
  EXPECT_EQ(person_.seen.size(), 3U);
}

TEST_F(PanesTest, ARenameOutOfTheAreaIsAskedFirst) {
  ShowListed({kFirst, kSecond});
  const struct {
    QString text;
    QMessageBox::StandardButton answer;
    std::string box;  // what it begins with; empty: none
    std::string shown;
  } cases[] = {
      {FromUtf8(kThird), QMessageBox::Ok, "", kThird},
      {u"elsewhere"_qs, QMessageBox::Cancel, "“elsewhere” is not the name of a package", kThird},
      {FromUtf8(kFirst), QMessageBox::Ok, "Authorization failure", kThird},
      {u"a/b"_qs, QMessageBox::Ok, "File or folder name contains", kThird},
      {QString(300, u'x'), QMessageBox::Ok, "Invalid parameters", kThird},
      {u"elsewhere"_qs, QMessageBox::Ok, "“elsewhere” is not the name of a package", kFirst},
  };
  for (const auto& c : cases) {
    person_.seen.clear();
    person_.answer = c.answer;
    tree_->setCurrentIndex(TreeItem(0));
    EditLabel(c.text);
    ASSERT_TRUE(Await([&] { return c.box.empty() || person_.seen.size() == 1; }));
    EXPECT_THAT(c.box.empty() ? std::string() : person_.seen.at(0), StartsWith(c.box));
    ASSERT_TRUE(Await([&] {
      return !session_->Busy() && ToUtf8(TreeItem(0).data().toString()) == c.shown;
    })) << c.shown;
  }
}

class Attached : public PanesTest {
 protected:
  void ShowFiles() {
    AddPackage(kFirst, {"A.txt", longName_});
    WriteFile(Served(kFirst + "/b.txt"), "12");
    WriteFile(Served(kFirst + "/..\\up"), "");
    ShowListed({kFirst});
  }
  Names Save(int row) {
    Click(&Attachments(), Attachments().CellAt(row, attachment_column::kSave));
    return std::exchange(downloads_.saved, {});
  }

  const std::string longName_ = std::string(245, 'n');
  const std::string other_ = "of" + kFirst + ".txt";
  const std::string folder_ = "/" + kFirst + "/";
};

TEST_F(Attached, FilesAreSavedFromTheLinkADoubleClickAndEnter) {
  ShowFiles();
  Click(&Attachments(), Attachments().CellAt(1, 0));
  EXPECT_THAT(downloads_.saved, IsEmpty());
  EXPECT_THAT(Save(2), ElementsAre("b.txt from " + folder_ + "b.txt"));
  Click(&Attachments(), Attachments().CellAt(1, 0), true);
  QTest::keyClick(&Attachments(), Qt::Key_Return);
  EXPECT_THAT(std::exchange(downloads_.saved, {}),
              ElementsAre("A.txt from " + folder_ + "A.txt", "A.txt from " + folder_ + "A.txt"));
  EXPECT_THAT(Save(0), ElementsAre("up from " + folder_ + "..\\up")) << "no name leaves its place";
  EXPECT_EQ(transfersShown_, 4);
  QAction* const all = commands_->SaveAllAction();
  all->trigger();
  EXPECT_THAT(std::exchange(downloads_.saved, {}), ElementsAre(kFirst));
  EXPECT_EQ(transfersShown_, 5);

  downloads_.duplicate = true;
  Save(1);
  all->trigger();
  downloads_.limit = true;
  Save(1);
  all->trigger();
  Save(3);
  EXPECT_EQ(transfersShown_, 10) << "who is refused sees the transfers too";
  EXPECT_EQ(person_.seen.size(), 5U);
  EXPECT_THAT(person_.seen.back(), ::testing::HasSubstr("Unfinished transfers that you started"));
  EXPECT_THAT(downloads_.saved, IsEmpty());
}

TEST_F(Attached, AFileIsDeletedIfItsNameIsSafeAndTheServiceAgrees) {
  ShowFiles();
  DeleteFile(0);
  ASSERT_TRUE(Await([&] { return person_.seen.size() == 2; }));
  EXPECT_THAT(person_.seen[1], StartsWith("File or folder name contains")) << "another folder's";
  for (const auto answer : {QMessageBox::Cancel, QMessageBox::Ok}) {
    EXPECT_THAT(AttachmentNames(), ElementsAre("..\\up", "A.txt", "b.txt", longName_, other_));
    person_.answer = answer;
    DeleteFile(1);
  }
  EXPECT_THAT(AttachmentNames(), ElementsAre("..\\up", "b.txt", longName_, other_));
  EXPECT_EQ(Attachments().SelectedRow(), -1);
}

TEST_F(Attached, SeveralAreDeletedByOneQuestionAndSizesSortAsNumbers) {
  ShowFiles();
  AttachmentList& list = Attachments();
  list.sortByColumn(attachment_column::kSize, Qt::DescendingOrder);
  EXPECT_THAT(AttachmentNames(), ElementsAre("A.txt", longName_, other_, "b.txt", "..\\up"));
  list.SelectRow(0);
  WriteFile(Served(kFirst + "/c.txt"), std::string(2000, 'c'));
  ASSERT_TRUE(Refresh());
  ASSERT_TRUE(Settle());
  EXPECT_THAT(AttachmentNames(),
              ElementsAre("c.txt", "A.txt", longName_, other_, "b.txt", "..\\up"));
  EXPECT_EQ(list.SelectedRow(), 1) << "the selection stays with its file";
  const auto* const save = list.findChild<QAction*>(u"saveFile"_qs);
  EXPECT_TRUE(save->isEnabled());
  list.selectionModel()->select(list.CellAt(0, 0),
                                QItemSelectionModel::Select | QItemSelectionModel::Rows);
  EXPECT_FALSE(save->isEnabled()) << "saves one, or Save All all";
  list.findChild<QAction*>(u"deleteFiles"_qs)->trigger();
  ASSERT_TRUE(Await([this] { return AttachmentNames().size() == 4; }));
  EXPECT_EQ(person_.seen.size(), 1U);
  EXPECT_THAT(AttachmentNames(), ElementsAre(longName_, other_, "b.txt", "..\\up"));
}

TEST(FileTypeNames, FollowTheExtensionFromTheFirstDot) {
  const std::pair<const char16_t*, const char16_t*> cases[] = {
      {u"report.pdf", u"PDF File"},
      {u"notes", u"NOTES File"},
      {u".txt", u".TXT File"},
      {u"my.report.pdf", u"REPORT.PDF File"},
      {u"a.", u" File"},
      {u"", u" File"},
      {u"note.é", u"É File"}};
  for (const auto& [name, type] : cases) {
    EXPECT_EQ(FileTypeName(name), type);
  }
}

}  // namespace
}  // namespace updown::test
