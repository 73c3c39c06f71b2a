#pragma once

#include <QBasicTimer>
#include <QIcon>
#include <QTreeWidget>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine/cache.h"
#include "packages/area_requests.h"
#include "packages/package_downloads.h"
#include "packages/tree_item.h"
#include "service/operations.h"

namespace updown {

// The left pane: the root "/" and one item for each package. It reads the service's folders for
// all views: packages become items and rows of the list, a package's files rows of the form, and
// headers that the cache lacks become hidden downloads. Its signals come in the middle of its work
// and are meant to be taken at once.
class CMyFolderTree : public QTreeWidget {
  Q_OBJECT

 public:
  // Makes the root; the first listing starts 100 ms later. What it is given outlives it.
  CMyFolderTree(AreaRequests& area, PackageDownloads& downloads, const PackageCache& cache,
                QWidget* parent = nullptr);
  ~CMyFolderTree() override;

  void SelectFromList(TreeItem item);
  void DeleteItem(TreeItem item);
  // Reads the packages of the root anew.
  void Refresh();

 Q_SIGNALS:
  // The folder whose files follow, or whose packages have been read.
  void FolderListed(const std::u16string& path);
  void PackageFound(TreeItem item, const DirectoryEntry& entry);
  void PackagesShown();      // by the first listing; the list's first row may be selected later
  void PackagesRefreshed();  // by Refresh; the list's first row is to be selected at once
  void FilesCleared();
  void FileFound(const DirectoryEntry& entry);

 protected:
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void moveEvent(QMoveEvent* event) override;
  void timerEvent(QTimerEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  enum class Expansion { Expand, Collapse, Toggle };

  TreeItem AddItem(QTreeWidgetItem* parent, const std::u16string& label);
  void DeletePackages(QTreeWidgetItem* root);
  QTreeWidgetItem* Find(TreeItem id) const;  // null: gone
  static TreeItem IdOf(const QTreeWidgetItem* item);
  static std::u16string ItemPath(const QTreeWidgetItem* item);
  bool Select(TreeItem id);
  void ClearChildrenFlag(TreeItem id);

  void OnSelectionChanged(TreeItem id);
  void OnExpanding(TreeItem id, Expansion expansion);
  bool IsOnExpander(const QTreeWidgetItem* item, const QPoint& position) const;
  bool EndLabelEdit(const QTreeWidgetItem* item, const std::u16string& text);

  void FillFolder(TreeItem id);
  void RefreshRoot();
  std::size_t AddPackages(TreeItem parent, const DirectoryList& entries);
  void PassFiles(const std::u16string& path, const DirectoryList& entries);
  void FetchMissing(const std::u16string& package);
  void FetchPackageIni(const std::u16string& name, const std::u16string& folder);

  AreaRequests& area_;
  PackageDownloads& downloads_;
  const PackageCache& cache_;

  QIcon image_;
  TreeItem rootId_ = TreeItem::None;
  TreeItem lastId_ = TreeItem::None;
  std::unordered_map<TreeItem, QTreeWidgetItem*> items_;
  QBasicTimer firstListing_;
  bool fillAttempted_ = false;
  bool suppressFill_ = false;
  bool rootPending_ = true;  // the next listing of the root also builds items and rows
};

}  // namespace updown
