#pragma once

#include <QBasicTimer>
#include <QIcon>
#include <QTreeWidget>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine/frame_operations.h"
#include "platform/qt/message_target.h"
#include "service/operations.h"

namespace updown {

// The left pane: the root "/" and one item for each package. It reads the service's folders for
// all views: packages become items and rows of the list, a package's files rows of the form, and
// headers that the cache lacks become hidden downloads.
//
// Messages name an item by a number of its own, so that a number whose item is gone finds nothing.
class CMyFolderTree : public QTreeWidget {
  Q_OBJECT

 public:
  explicit CMyFolderTree(FrameOperations& frame, QWidget* parent = nullptr);
  ~CMyFolderTree() override;

  WindowHandle Handle() const { return target_.Handle(); }
  void WireWindows(WindowHandle list, WindowHandle form, WindowHandle frame);

  // Once the handles are wired: makes the root and starts the first listing 100 ms later.
  void InitTree();

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
  using ItemId = LongParam;
  enum class Expansion { Expand, Collapse, Toggle };

  MessageResult WindowProc(const WindowMessage& message);

  ItemId AddItem(QTreeWidgetItem* parent, const std::u16string& label);
  void DeleteItem(ItemId id);
  void DeletePackages(QTreeWidgetItem* root);
  QTreeWidgetItem* Find(ItemId id) const;  // null: gone
  static ItemId IdOf(const QTreeWidgetItem* item);
  static std::u16string ItemPath(const QTreeWidgetItem* item);
  bool Select(ItemId id);
  void ClearChildrenFlag(ItemId id);

  void OnSelectionChanged(ItemId id);
  void OnExpanding(ItemId id, Expansion expansion);
  bool IsOnExpander(const QTreeWidgetItem* item, const QPoint& position) const;
  void SelectFromList(ItemId id);
  bool EndLabelEdit(const QTreeWidgetItem* item, const std::u16string& text);

  void FillFolder(ItemId id);
  void RefreshRoot();
  bool OpenSession();
  std::unique_ptr<DirectoryList> ListFolder(const std::u16string& path);
  void AnnounceFolder(const std::u16string& path);
  std::size_t AddPackages(ItemId parent, const DirectoryList& entries);
  void SendAttachments(const std::u16string& path, const DirectoryList& entries);
  void FetchMissing(const std::u16string& package);
  void FetchPackageIni(const std::u16string& name, const std::u16string& folder);
  bool HaveFrame();

  FrameOperations& frame_;
  WindowHandle listWindow_;
  WindowHandle frameWindow_;
  WindowHandle formWindow_;

  QIcon image_;
  ItemId rootId_ = 0;
  ItemId lastId_ = 0;
  std::unordered_map<ItemId, QTreeWidgetItem*> items_;
  QBasicTimer firstListing_;
  bool fillAttempted_ = false;
  bool suppressFill_ = false;
  bool rootPending_ = false;  // the next listing of the root also builds items and rows
  MessageTarget target_;
};

}  // namespace updown
