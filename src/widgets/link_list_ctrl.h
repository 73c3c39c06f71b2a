#pragma once

#include <map>

#include "widgets/link_cells.h"
#include "widgets/row_list_view.h"

namespace updown {

// CellKey = row * 100 + column: lists of fewer than 100 columns.
using CellKey = int;
constexpr int kColumnsOfKey = 100;
constexpr CellKey MakeCellKey(int row, int column) { return row * kColumnsOfKey + column; }

// The attachment list: cells can be links (underlined; another colour and a hand under the mouse)
// and can have a tip, shown over the cell's label. What a click does is the owner's business.
class CLinkListCtrl : public RowListView {
  Q_OBJECT

 public:
  explicit CLinkListCtrl(QWidget* parent = nullptr);
  ~CLinkListCtrl() override;

  // Cell of the last click that the owner recorded.
  int lastRow = -1;
  int lastColumn = -1;

  bool AddLink(int row, int column);  // false if there is no such cell
  bool HasLink(int row, int column) const;
  void SetLinkHover(int row, int column, bool hover);
  bool LinkHover(int row, int column) const;
  // Where the cell's text stands, in viewport coordinates; empty for an empty text.
  QRect LinkTextRect(int row, int column) const;
  void InvalidateCell(int row, int column);

  void SetCellTip(int row, int column, const QString& text);
  QString GetCellTip(int row, int column) const;
  void DeleteAllTips();

  // Removes rows from the model, and the tips with them. Links stay by key: the rows below a
  // removed one, or rows filled in anew, find theirs again.
  bool DeleteAllItems();
  bool DeleteItem(int row);

 Q_SIGNALS:
  void CellClicked(int row, int column);  // left click; row -1 below the rows
  void RowActivated();                    // double click anywhere in the list, or Enter

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  struct LinkCell {
    bool hover = false;
  };

  // The cell without its icon.
  QRect LabelRect(const QModelIndex& index) const;
  bool ShowTip(const QPoint& position, const QPoint& globalPosition);

  std::map<CellKey, LinkCell> links_;
  std::map<CellKey, QString> tips_;
  LinkHit lastHit_;
  bool pressed_ = false;  // the left button went down, and not for a double click
};

}  // namespace updown
