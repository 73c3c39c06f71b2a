#include <optional>

#include "engine/package.h"
#include "localdata/file_names.h"
#include "packages/my_folder_tree.h"
#include "packages/package_names.h"
#include "widgets/busy_pointer.h"

// The listings: from the service's folders to items, rows and hidden downloads.

namespace updown {

void CMyFolderTree::FillFolder(TreeItem id) {
  fillAttempted_ = true;
  if (suppressFill_ || !Select(id)) {
    return;
  }
  const BusyPointer busy;
  const std::u16string path = ItemPath(Find(id));
  if (!area_.OpenSession()) {
    return;
  }
  downloads_.RestoreTasks();
  const std::optional<DirectoryList> entries = area_.ListFolder(path);
  if (!entries) {
    area_.ReopenSession();
    return;
  }
  Q_EMIT FolderListed(path);
  if (path != u"/") {
    Q_EMIT FilesCleared();
  }
  std::size_t children = 0;
  if (rootPending_) {
    children = AddPackages(id, *entries);
    Q_EMIT PackagesShown();
  }
  rootPending_ = false;
  PassFiles(path, *entries);
  if (children == 0) {
    ClearChildrenFlag(id);
  }
}

void CMyFolderTree::RefreshRoot() {
  const BusyPointer busy;
  const std::u16string path = u"/";
  Select(rootId_);
  DeletePackages(Find(rootId_));
  if (!area_.OpenSession()) {
    return;
  }
  std::optional<DirectoryList> entries = area_.ListFolder(path);
  if (!entries) {
    if (!area_.ReopenSession()) {
      return;
    }
    entries = area_.ListFolder(path);
  }
  Q_EMIT FolderListed(path);
  const std::size_t children = entries ? AddPackages(rootId_, *entries) : 0;
  Q_EMIT PackagesRefreshed();
  if (children == 0) {
    ClearChildrenFlag(rootId_);
  }
}

std::size_t CMyFolderTree::AddPackages(TreeItem parent, const DirectoryList& entries) {
  const std::vector<ListedPackage> packages = PackagesIn(entries);
  for (const ListedPackage& package : packages) {
    KnownPackageNames().Append(package.name);
    FetchMissing(package.name);
  }
  for (const ListedPackage& package : packages) {
    Q_EMIT PackageFound(AddItem(Find(parent), package.name), *package.entry);
  }
  return packages.size();
}

// The root passes no files.
void CMyFolderTree::PassFiles(const std::u16string& path, const DirectoryList& entries) {
  if (path == u"/") {
    return;
  }
  for (const DirectoryEntry& entry : entries) {
    if (entry.type == kEntryFile &&
        !KnownPackageNames().IsPackageIniName(Utf8ToWideName(entry.name))) {
      Q_EMIT FileFound(entry);
    }
  }
}

void CMyFolderTree::FetchMissing(const std::u16string& package) {
  for (const std::u16string& file : {IniNameOf(package), StartIniNameOf(package)}) {
    if (!cache_.IsPackageIniCached(WideToUtf8Name(file))) {
      FetchPackageIni(file, package + u"/");
    }
  }
}

void CMyFolderTree::FetchPackageIni(const std::u16string& name, const std::u16string& folder) {
  const std::u16string remotePath = u"/" + folder + name;
  if (!FitsPath(remotePath) || downloads_.IsQueued(remotePath)) {
    return;
  }
  downloads_.FetchHeader(WideToUtf8Name(name), WideToUtf8Name(remotePath));
}

}  // namespace updown
