#include "engine/frame_messages.h"
#include "engine/package.h"
#include "localdata/file_names.h"
#include "packages/my_folder_tree.h"
#include "packages/package_names.h"
#include "widgets/busy_pointer.h"

// The listings: from the service's folders to items, rows and hidden downloads.

namespace updown {

void CMyFolderTree::FillFolder(ItemId id) {
  fillAttempted_ = true;
  if (suppressFill_ || !Select(id)) {
    return;
  }
  const BusyPointer busy;
  const std::u16string path = ItemPath(Find(id));
  if (!OpenSession()) {
    return;
  }
  frame_.RestoreTasks();
  const std::unique_ptr<DirectoryList> entries = ListFolder(path);
  if (entries == nullptr) {  // the frame has shown why
    frame_.Session().Close();
    frame_.Session().OpenSharedSession();
    return;
  }
  AnnounceFolder(path);
  if (path != u"/" && IsWindow(formWindow_)) {
    SendWindowMessage(formWindow_, frame_message::kClearRows, 0, 0);
  }
  std::size_t children = 0;
  if (rootPending_) {
    children = AddPackages(id, *entries);
    PostWindowMessage(listWindow_, frame_message::kSelectRow, 0, 0);
  }
  rootPending_ = false;
  SendAttachments(path, *entries);
  if (children == 0) {
    ClearChildrenFlag(id);
  }
}

void CMyFolderTree::RefreshRoot() {
  const BusyPointer busy;
  const std::u16string path = u"/";
  Select(rootId_);
  DeletePackages(Find(rootId_));
  if (!OpenSession()) {
    return;
  }
  std::unique_ptr<DirectoryList> entries = ListFolder(path);
  if (entries == nullptr) {
    frame_.Session().Close();
    if (!frame_.Session().OpenSharedSession().open) {
      return;
    }
    entries = ListFolder(path);
  }
  AnnounceFolder(path);
  const std::size_t children = entries == nullptr ? 0 : AddPackages(rootId_, *entries);
  if (IsWindow(listWindow_)) {
    SendWindowMessage(listWindow_, frame_message::kSelectRow, 0, 0);
  }
  if (children == 0) {
    ClearChildrenFlag(rootId_);
  }
}

// A failure without a code goes on: the listing then fails by itself.
bool CMyFolderTree::OpenSession() {
  const SharedSession::Opened opened = frame_.Session().OpenSharedSession();
  if (opened.open || opened.error == 0) {
    return true;
  }
  frame_.ReportResult(opened.error);
  return false;
}

std::unique_ptr<DirectoryList> CMyFolderTree::ListFolder(const std::u16string& path) {
  return std::unique_ptr<DirectoryList>(PointerFrom<DirectoryList>(
      SendWindowMessage(frameWindow_, frame_message::kListFolder, 0, PointerParam(&path))));
}

void CMyFolderTree::AnnounceFolder(const std::u16string& path) {
  if (IsWindow(formWindow_)) {
    SendWindowMessage(formWindow_, frame_message::kCurrentFolder, 0, PointerParam(&path));
    SendWindowMessage(frameWindow_, frame_message::kLayOutPanes, 0, PointerParam(&path));
  }
}

std::size_t CMyFolderTree::AddPackages(ItemId parent, const DirectoryList& entries) {
  const std::vector<ListedPackage> packages = PackagesIn(entries);
  for (const ListedPackage& package : packages) {
    KnownPackageNames().Append(package.name);
    FetchMissing(package.name);
  }
  for (const ListedPackage& package : packages) {
    const ItemId added = AddItem(Find(parent), package.name);
    if (IsWindow(listWindow_)) {
      SendWindowMessage(listWindow_, frame_message::kAddEntry, static_cast<WideParam>(added),
                        PointerParam(package.entry));
    }
  }
  return packages.size();
}

// The root passes no attachments. A form that has gone takes none.
void CMyFolderTree::SendAttachments(const std::u16string& path, const DirectoryList& entries) {
  if (path == u"/") {
    return;
  }
  for (const DirectoryEntry& entry : entries) {
    if (!IsWindow(formWindow_)) {
      return;
    }
    if (entry.type == kEntryFile &&
        !KnownPackageNames().IsPackageIniName(Utf8ToWideName(entry.name))) {
      SendWindowMessage(formWindow_, frame_message::kAddEntry, 0, PointerParam(&entry));
    }
  }
}

void CMyFolderTree::FetchMissing(const std::u16string& package) {
  for (const std::u16string& file : {IniNameOf(package), StartIniNameOf(package)}) {
    if (!frame_.Cache().IsPackageIniCached(WideToUtf8Name(file))) {
      FetchPackageIni(file, package + u"/");
    }
  }
}

void CMyFolderTree::FetchPackageIni(const std::u16string& name, const std::u16string& folder) {
  const std::u16string remotePath = u"/" + folder + name;
  if (name.empty() || !HaveFrame() || !FitsPath(remotePath) ||
      SendWindowMessage(frameWindow_, frame_message::kIsQueued, 0, PointerParam(&remotePath)) ==
          1) {
    return;
  }
  frame_.AddCacheDownload(false, DraftOf(frame_, WideToUtf8Name(name), WideToUtf8Name(remotePath)));
}

bool CMyFolderTree::HaveFrame() {
  if (!IsWindow(frameWindow_)) {
    frameWindow_ = frame_.FrameWindow();
  }
  return IsWindow(frameWindow_);
}

}  // namespace updown
