#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <QAction>
#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QTest>
#include <QTimer>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "engine/frame_messages.h"
#include "platform/qt/text.h"
#include "platform/unique_fd.h"
#include "resources/strings.h"
#include "tests/support/temporary_folder.h"
#include "views/my_file_list_form_view.h"
#include "views/my_folder_tree.h"
#include "views/my_form_view.h"

namespace updown::test {

using Log = std::vector<std::string>;

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

// The frame as the views know it. Folders are listed from a script, one that is not in it fails;
// what the views ask for goes into the log.
class FakeFrame : public FrameOperations {
 public:
  WindowHandle FrameWindow() const override { return target_.Handle(); }
  void ReportResult(std::int64_t code) override { log.push_back("report " + std::to_string(code)); }
  bool AddUserDownload(bool keep, const TaskDraft& draft) override {
    log.push_back("save " + draft.displayName + " from " + draft.remotePath);
    return keep;
  }
  void AddCacheDownload(bool, const TaskDraft& draft) override {
    log.push_back("fetch " + draft.displayName + " from " + draft.remotePath);
  }
  void RestoreTasks() override {}
  void RemoveTask(TaskId) override {}
  TaskStore& Tasks() override { return store_; }
  SharedSession& Session() override { return session_; }
  const LaunchState& Launch() const override { return launch; }
  const PackageCache& Cache() const override { return cache_; }

  std::string CacheFile(const std::string& name) const { return folder_.File(name); }

  std::map<std::string, std::vector<ListedEntry>> folders;
  bool reachable = true;
  MessageResult removal = 0;  // of a package or a file
  MessageResult rename = 0;
  bool duplicate = false;
  Log log;
  LaunchState launch;

 private:
  // A session that opens, and whose service says nothing.
  int Connect() {
    int ends[2];
    if (!reachable || socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
      return -1;
    }
    const UniqueFd service(ends[1]);
    log.emplace_back("connect");
    return ends[0];
  }
  MessageResult Receive(const WindowMessage& message) {
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

  TemporaryFolder folder_;
  FileService dialect_;
  TaskStore store_{std::make_shared<TaskQueue>(), launch};
  SharedSession session_{dialect_, launch, nullptr,
                         [this](std::string_view, std::uint16_t) { return Connect(); }};
  PackageCache cache_{folder_.Path()};
  MessageTarget target_{[this](const WindowMessage& message) { return Receive(message); }};
};

// Tree, list and form side by side, wired as the program does it, and a person who answers boxes.
class ViewsWorld : public ::testing::Test {
 protected:
  ViewsWorld() {
    window_.resize(1000, 700);
    window_.addWidget(tree_);
    window_.addWidget(list_);
    window_.addWidget(form_);
    form_->InitForm();
    tree_->WireWindows(list_->Handle(), form_->Handle(), frame_.FrameWindow());
    list_->WireWindows(tree_->Handle(), frame_.FrameWindow(), form_->Handle());
    form_->WireWindows(frame_.FrameWindow());
    tree_->InitTree();
    list_->InitList();
    window_.show();
    window_.activateWindow();
    QObject::connect(&person_, &QTimer::timeout, &person_, [this] { AnswerBox(); });
    person_.start(0);
  }

  // A package with one file, and its header in the cache: "f" + its last digit and so on.
  void AddPackage(const std::string& name, bool complete = true) {
    frame_.folders["/"].push_back({name, kEntryFolder});
    frame_.folders["/" + name] = {{name + ".ini"}, {name + "_Start.ini"}, {"of" + name + ".txt"}};
    Arrive(name + "_Start.ini", std::string("f") + name.back());
    if (complete) {
      Arrive(name + ".ini", "other");
    }
  }
  void Arrive(const std::string& file, const std::string& from) {
    WriteFile(frame_.CacheFile(file), "[Tallbin]\nTXT_From=" + from +
                                          "\nTXT_Subject=about\nTXT_Notes=a\xFF\xFF"
                                          "b\n");
  }
  // What timer and posted messages do at the start.
  void Start() {
    tree_->setCurrentItem(Root());
    QCoreApplication::processEvents();
  }
  Log TakeLog() { return std::exchange(frame_.log, {}); }

  QTreeWidgetItem* Root() const { return tree_->topLevelItem(0); }
  // The list's column of senders, top row first.
  std::string Senders() const {
    std::string senders;
    for (int row = 0; row < Rows(); ++row) {
      senders += Cell(row, 1) + " ";
    }
    return senders;
  }
  std::string Cell(int row, int column) const {
    return ToUtf8(Table()->model()->index(row, column).data().toString());
  }
  int Rows() const { return Table()->model()->rowCount(); }
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
  void Choose(QWidget* view, const QString& menu, int item) {
    auto* const popup = view->findChild<QMenu*>(menu);
    ASSERT_NE(popup, nullptr);
    QAction* const action = popup->actions().at(item);
    popup->close();
    action->trigger();
    QCoreApplication::processEvents();
  }

  FakeFrame frame_;
  QSplitter window_;
  CMyFolderTree* tree_ = new CMyFolderTree(frame_);
  CMyFileListFormView* list_ = new CMyFileListFormView(frame_);
  CMyFormView* form_ = new CMyFormView(frame_);
  QMessageBox::StandardButton answer_ = QMessageBox::Ok;
  Log boxes_;

 private:
  void AnswerBox() {
    auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (box != nullptr) {
      boxes_.push_back(ToUtf8(box->text()));
      QAbstractButton* const button = box->button(answer_);
      (button != nullptr ? button : box->button(QMessageBox::Ok))->click();
    }
  }

  QTimer person_;
};

}  // namespace updown::test
