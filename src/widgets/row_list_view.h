#pragma once

#include <QTreeView>

#include "widgets/accessible.h"

namespace updown {

// What the program's lists have in common: rows of cells without a tree, one of them selected as a
// whole, a menu for the selected row by mouse and by keyboard, and cells that a screen reader can
// read.
class RowListView : public QTreeView, public AccessibleCells {
  Q_OBJECT

 public:
  explicit RowListView(QWidget* parent);

  // The selected row, which is the selection mark too; -1 if there is none.
  int SelectedRow() const;
  // A row that does not exist takes the selection away.
  void SelectRow(int row);

  // Rows and columns below the view's root.
  int RowCount() const;
  int ColumnCount() const;
  QModelIndex CellAt(int row, int column) const;

  // What the list says while it has no rows; empty: nothing.
  void SetHint(const QString& hint);

 Q_SIGNALS:
  // Right click, Menu key or Shift+F10 on a row, which is selected by then.
  void RowMenuRequested(int row, const QPoint& globalPosition);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;

 private:
  bool SelectCurrentRow();  // if none is selected; true if that changed it
  void OpenMenuByKey();

  QString hint_;
};

}  // namespace updown
