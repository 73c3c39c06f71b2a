#pragma once

#include <QHeaderView>
#include <array>

namespace updown {

// One stroke of the sort arrow, with one of two pens. The end point itself is not drawn.
struct ArrowStroke {
  bool light = false;
  QPoint from;
  QPoint to;
};

// The arrow at the right end of a header item.
std::array<ArrowStroke, 3> SortArrow(const QRect& item, bool ascending);

// Where the item's text stands.
QRect HeaderTextRect(const QRect& item, bool hasArrow);

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
