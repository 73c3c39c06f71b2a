#pragma once

#include "widgets/item_view.h"

namespace updown {

// A list of rows that are selected as a whole, one at a time unless setSelectionMode() says
// otherwise, and a hint in place of rows.
class RowListView : public ItemView {
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
