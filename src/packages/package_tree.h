#pragma once

#include <QTreeView>

#include "packages/package_columns.h"

namespace updown {

// The left pane: the root "/" and below it the packages by their names, which can be edited. It
// shows the area's selection and changes it; the root is no package and leaves it as it is.
class PackageTree : public QTreeView {
  Q_OBJECT

 public:
  explicit PackageTree(PackageArea& area, QWidget* parent = nullptr);  // the area outlives it

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

  PackageArea& area_;
  PackageTreeColumns columns_;
  bool following_ = false;  // the current item changes, but not by the user
};

}  // namespace updown
