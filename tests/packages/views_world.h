#pragma once

#include <gmock/gmock.h>

#include <QAction>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPlainTextEdit>
#include <QSplitter>
#include <QTest>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "packages/pane_links.h"
#include "platform/text.h"
#include "resources/texts.h"
#include "tests/support/granted_session.h"
#include "tests/support/person.h"
#include "tests/support/temporary_folder.h"

namespace updown::test {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

inline const std::string kFirst = "20080115093011";
inline const std::string kSecond = "20080115093012";
inline const std::string kThird = "20080115093013";

struct ListedEntry {
  std::string name;
  std::uint16_t type = kEntryFile;
  std::uint32_t size = 0;
  std::uint32_t time = 0;
};

inline DirectoryList MakeListing(const std::vector<ListedEntry>& entries) {
  DirectoryList list;
  for (const ListedEntry& listed : entries) {
    list.push_back({.name = listed.name,
                    .modificationTime = listed.time,
                    .size = listed.size,
                    .type = listed.type});
  }
  return list;
}

// Service and downloads as the panes know them, and a log of what is asked. Folders are listed from
// a script; one that is not in it fails.
class ScriptedArea : public AreaRequests, public PackageDownloads {
 public:
  bool OpenSession() override {
    const auto opened = session.Session().OpenSharedSession();
    ReportResult(opened.error);
    return opened.open;
  }
  bool ReopenSession() override {
    session.Session().Close();
    return session.Session().OpenSharedSession().open;
  }
  std::optional<DirectoryList> ListFolder(const std::u16string& path) override {
    log.push_back("list " + WideToUtf8(path));
    const auto folder = folders.find(WideToUtf8(path));
    return folder == folders.end() ? std::nullopt : std::optional(MakeListing(folder->second));
  }
  int RenameEntry(const std::u16string& newPath, const std::u16string& oldPath) override {
    log.push_back("rename " + WideToUtf8(oldPath) + " to " + WideToUtf8(newPath));
    return rename;
  }
  int RemoveFile(const std::u16string& path) override {
    log.push_back("remove " + WideToUtf8(path));
    return removal;
  }
  int RemovePackage(const std::u16string& path) override { return RemoveFile(path); }
  void ReportResult(std::int64_t code) override {
    if (code != 0) {
      log.push_back("report " + std::to_string(code));
    }
  }

  void RestoreTasks() override {}
  bool IsQueued(const std::u16string&) override { return false; }
  void FetchHeader(const std::string& name, const std::string& path) override {
    log.push_back("fetch " + name + " from " + path);
  }
  bool StreamLimitReached() const override { return limitReached; }
  bool IsDuplicate(const std::u16string&) override { return duplicate; }
  bool SaveFile(const std::string& name, const std::string& path) override {
    log.push_back("save " + name + " from " + path);
    return true;
  }

  Log log;
  GrantedSession session{log};
  std::map<std::string, std::vector<ListedEntry>> folders;
  int removal = 0;  // of a package or a file
  int rename = 0;
  bool duplicate = false;
  bool limitReached = false;
};

// Tree, list and form side by side, tied together as in the program.
class ViewsWorld : public ::testing::Test {
 protected:
  ViewsWorld() {
    window_.resize(1000, 700);
    for (QWidget* pane : {static_cast<QWidget*>(tree_), static_cast<QWidget*>(list_),
                          static_cast<QWidget*>(form_)}) {
      window_.addWidget(pane);
    }
    LinkPanes(*tree_, *list_, *form_);
    QObject::connect(tree_, &CMyFolderTree::PackagesShown, list_,
                     &CMyFileListFormView::SelectTopRow, Qt::QueuedConnection);
    QObject::connect(form_, &CMyFormView::TransfersWanted, form_,
                     [this] { area_.log.emplace_back("status window"); });
    window_.show();
    window_.activateWindow();
  }

  // A package with one file, and its header in the cache: sender "f" + the name's last digit.
  void AddPackage(const std::string& name, bool complete = true) {
    area_.folders["/"].push_back({name, kEntryFolder});
    area_.folders["/" + name] = {{name + ".ini"}, {name + "_Start.ini"}, {"of" + name + ".txt"}};
    Arrive(name + "_Start.ini", std::string("f") + name.back());
    if (complete) {
      Arrive(name + ".ini", "other");
    }
  }
  void Arrive(const std::string& file, const std::string& from) {
    WriteFile(folder_.File(file), "[Tallbin]\nTXT_From=" + from + "\nTXT_Notes=a\xFF\xFF" + "b\n");
  }
  // What timer and posted messages do at the start; gives what the program was asked for.
  Log Start(const std::vector<std::string>& packages = {}) {
    for (const std::string& name : packages) {
      AddPackage(name);
    }
    tree_->setCurrentItem(Root());
    QCoreApplication::processEvents();
    return TakeLog();
  }
  Log TakeLog() { return std::exchange(area_.log, {}); }

  QTreeWidgetItem* Root() const { return tree_->topLevelItem(0); }
  QTreeWidgetItem* Package(int index) const { return Root()->child(index); }
  std::string Cell(int row, int column) const {
    return ToUtf8(Table()->model()->index(row, column).data().toString());
  }
  // The list's column of senders, top row first.
  std::string Senders() const {
    std::string senders;
    for (int row = 0; row < Table()->model()->rowCount(); ++row) {
      senders += Cell(row, 1) + " ";
    }
    return senders;
  }
  CListCtrlEx* Table() const { return list_->findChild<CListCtrlEx*>(u"packageList"_qs); }
  CLinkListCtrl* Attachments() const {
    return form_->findChild<CLinkListCtrl*>(u"attachmentList"_qs);
  }
  Log AttachmentNames() const {
    Log names;
    for (int row = 0; row < Attachments()->RowCount(); ++row) {
      names.push_back(ToUtf8(Attachments()->model()->index(row, 0).data().toString()));
    }
    return names;
  }
  std::string Header() const {
    return ToUtf8(form_->findChild<QLabel*>(u"packageHeader"_qs)->text());
  }
  QString Notes() const { return form_->findChild<QPlainTextEdit*>()->toPlainText(); }
  // Opens a row's menu and takes its delete item.
  void DeleteByMenu(RowListView* list, int row, const QString& menu) {
    list->SelectRow(row);
    TakeLog();
    Q_EMIT list->RowMenuRequested(row, QPoint());
    auto* const popup = window_.findChild<QMenu*>(menu);
    ASSERT_NE(popup, nullptr);
    QAction* const action = popup->actions().at(1);
    popup->close();
    action->trigger();
    QCoreApplication::processEvents();
  }

  TemporaryFolder folder_;
  PackageCache cache_{folder_.Path()};
  LaunchState launch_;
  ScriptedArea area_;
  Person person_;
  QSplitter window_;
  CMyFolderTree* tree_ = new CMyFolderTree(area_, area_, cache_);
  CMyFileListFormView* list_ = new CMyFileListFormView(area_, cache_, launch_);
  CMyFormView* form_ = new CMyFormView(area_, area_, cache_, launch_);
};

}  // namespace updown::test
