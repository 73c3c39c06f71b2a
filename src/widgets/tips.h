#pragma once

#include <QAbstractItemView>
#include <QString>

namespace updown {

// Shows all of a plain text as the tip of `area` in `owner`; long lines are broken. An empty text
// takes the tip away.
void ShowTip(const QPoint& globalPosition, const QString& text, QWidget* owner, const QRect& area);

// The tips of a view's cells: the model's Qt::ToolTipRole, which is plain text, or else the cell's
// own text where it does not show whole.
class CellTips : public QObject {
 public:
  explicit CellTips(QAbstractItemView* view);  // which owns it

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QString TipOf(const QModelIndex& index) const;

  QAbstractItemView* const view_;
};

}  // namespace updown
