#pragma once

#include <QBasicTimer>
#include <QRegion>
#include <QStyledItemDelegate>

namespace updown {

// What a cell with a bar gives for this role: a float from 0 to 100, or kWaitingBar for a bar that
// blinks, full and empty, because nothing is known yet. Any other cell is painted as text.
inline constexpr int kPercentRole = Qt::UserRole + 200;
inline constexpr float kWaitingBar = -1;

// What stands over a bar, "33.34%"; empty for one that waits.
QString PercentText(float percent);

// Paints the bars of a column. All that wait blink together by one timer, which stops by itself
// when none of them has been painted for a while: none is left, or none can be seen.
class ProgressDelegate : public QStyledItemDelegate {
  Q_OBJECT

 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override;
  bool Blinking() const { return timer_.isActive(); }

 protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
  void timerEvent(QTimerEvent* event) override;

 private:
  float ShownPart(float percent, const QStyleOptionViewItem& option) const;

  mutable QBasicTimer timer_;
  mutable QRegion waiting_;  // what has been painted of bars that wait since the timer's last tick
  bool full_ = true;
};

}  // namespace updown
