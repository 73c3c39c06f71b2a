#pragma once

#include <QAction>

#include "packages/package_columns.h"
#include "packages/package_commands.h"
#include "widgets/item_view.h"

namespace updown {

// The left pane: the root "/" and below it the packages by their names, which can be edited. It
// shows the area's selection and changes it; the root is no package and leaves it as it is.
class PackageTree : public ItemView {
  Q_OBJECT

 public:
  // Both outlive the tree.
  PackageTree(PackageArea& area, PackageCommands& commands, QWidget* parent = nullptr);

 protected:
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
  void rowsInserted(const QModelIndex& parent, int first, int last) override;
  void rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void moveEvent(QMoveEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void ShowSelection();
  void UpdateActions();
  std::string CurrentPackage() const;  // empty for the root

  PackageArea& area_;
  PackageTreeColumns columns_;
  QAction* rename_;
  QAction* delete_;
  bool following_ = false;  // the current item changes, but not by the user
};

}  // namespace updown
