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

#include "packages/my_file_list_form_view.h"
#include "packages/my_folder_tree.h"
#include "packages/my_form_view.h"
#include "resources/texts.h"
#include "tests/support/fake_frame.h"
#include "tests/support/person.h"

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

inline std::unique_ptr<DirectoryList> MakeListing(const std::vector<ListedEntry>& entries) {
  auto list = std::make_unique<DirectoryList>();
  for (const ListedEntry& listed : entries) {
    auto entry = std::make_unique<DirectoryEntry>();
    entry->name = listed.name;
    entry->type = listed.type;
    entry->size = listed.size;
    entry->modificationTime = listed.time;
    list->Append(std::move(entry));
  }
  return list;
}

// Folders are listed from a script; one that is not in it fails.
class ScriptedFrame : public FakeFrame {
 public:
  std::map<std::string, std::vector<ListedEntry>> folders;
  MessageResult removal = 0;  // of a package or a file
  MessageResult rename = 0;
  bool duplicate = false;

 private:
  MessageResult Receive(const WindowMessage& message) override {
    const auto* const text = PointerFrom<const std::u16string>(message.lParam);
    const std::string path = text == nullptr ? "" : WideToUtf8(*text);
    switch (message.number) {
      case frame_message::kListFolder: {
        log.push_back("list " + path);
        const auto folder = folders.find(path);
        return folder == folders.end() ? 0 : PointerParam(MakeListing(folder->second).release());
      }
      case frame_message::kRename:
        log.push_back("rename " + path + " to " +
                      WideToUtf8(*PointerFrom<const std::u16string>(message.wParam)));
        return rename;
      case frame_message::kRemoveFile:
      case frame_message::kRemovePackage:
        log.push_back("remove " + path);
        return removal;
      case frame_message::kIsDuplicate:
        return duplicate ? 1 : 0;
      case frame_message::kShowStatus:
        log.emplace_back("status window");
        return 0;
      default:
        return 0;
    }
  }
};

// Tree, list and form side by side, wired as the program does it.
class ViewsWorld : public ::testing::Test {
 protected:
  ViewsWorld() {
    window_.resize(1000, 700);
    for (QWidget* pane : {static_cast<QWidget*>(tree_), static_cast<QWidget*>(list_),
                          static_cast<QWidget*>(form_)}) {
      window_.addWidget(pane);
    }
    form_->InitForm();
    tree_->WireWindows(list_->Handle(), form_->Handle(), frame_.FrameWindow());
    list_->WireWindows(tree_->Handle(), frame_.FrameWindow(), form_->Handle());
    form_->WireWindows(frame_.FrameWindow());
    tree_->InitTree();
    list_->InitList();
    window_.show();
    window_.activateWindow();
  }

  // A package with one file, and its header in the cache: sender "f" + the name's last digit.
  void AddPackage(const std::string& name, bool complete = true) {
    frame_.folders["/"].push_back({name, kEntryFolder});
    frame_.folders["/" + name] = {{name + ".ini"}, {name + "_Start.ini"}, {"of" + name + ".txt"}};
    Arrive(name + "_Start.ini", std::string("f") + name.back());
    if (complete) {
      Arrive(name + ".ini", "other");
    }
  }
  void Arrive(const std::string& file, const std::string& from) {
    WriteFile(frame_.CacheFile(file),
              "[Tallbin]\nTXT_From=" + from + "\nTXT_Notes=a\xFF\xFF" + "b\n");
  }
  // What timer and posted messages do at the start; gives what the frame was asked for.
  Log Start(const std::vector<std::string>& packages = {}) {
    for (const std::string& name : packages) {
      AddPackage(name);
    }
    tree_->setCurrentItem(Root());
    QCoreApplication::processEvents();
    return TakeLog();
  }
  Log TakeLog() { return frame_.TakeLog(); }

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

  ScriptedFrame frame_;
  Person person_;
  QSplitter window_;
  CMyFolderTree* tree_ = new CMyFolderTree(frame_);
  CMyFileListFormView* list_ = new CMyFileListFormView(frame_);
  CMyFormView* form_ = new CMyFormView(frame_);
};

}  // namespace updown::test
