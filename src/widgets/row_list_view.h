#pragma once

#include <QTreeView>

namespace updown {

// What the program's lists have in common: rows of cells without a tree that are selected as a
// whole, one at a time unless setSelectionMode() says otherwise; their actions() as context menu
// (see ItemViewMenu); the texts of cut cells as tips (see CellTips). A screen reader hears the
// model's Qt::AccessibleTextRole, or else the cell's text, and its Qt::AccessibleDescriptionRole.
class RowListView : public QTreeView {
  Q_OBJECT

 public:
  explicit RowListView(QWidget* parent);

  // The selected row: of several the current one or else the uppermost; -1 if there is none.
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
  // Time to enable the actions that fit the selection.
  void MenuAboutToOpen();
  // For lists without actions: right click, Menu key or Shift+F10 on a row, which is selected by
  // then.
  void RowMenuRequested(int row, const QPoint& globalPosition);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;

 private:
  bool SelectCurrentRow();  // if none is selected; true if that changed it

  QString hint_;
};

}  // namespace updown
