#pragma once

#include <QHeaderView>

namespace updown {

// The header of the package list and of the attachment list; draws the sort arrow itself.
class CSortHeaderCtrl : public QHeaderView {
  Q_OBJECT

 public:
  explicit CSortHeaderCtrl(QWidget* parent = nullptr);

  // Another column becomes the sort column, ascending; the same one inverts the direction.
  void SetSortColumn(int column);
  int GetSortColumn() const { return sortColumn_; }
  bool GetAscending() const { return ascending_; }

 protected:
  void paintSection(QPainter* painter, const QRect& rect, int column) const override;

 private:
  bool ascending_ = true;
  int sortColumn_ = -1;
};

}  // namespace updown
