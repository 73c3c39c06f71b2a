#pragma once

#include <QBasicTimer>
#include <QColor>
#include <QWidget>
#include <cstdint>

namespace updown {

// The bar of the status window's "Progress" column: a percentage as text over the filled part, or a
// bar that blinks, full and empty, while the transfer has no size yet. Contents margins become its
// frame.
class CProgressPainter : public QWidget {
  Q_OBJECT

 public:
  explicit CProgressPainter(QWidget* parent);

  // Starts the blinking with the waiting mode.
  void Create();

  // 0 to 100; repaints, and the painting has happened on return. -1, changing nothing, before
  // Create().
  int SetPercent(float percent);
  float Percent() const { return percent_; }

  // Waiting mode blinks and shows no text. Leaving it stops the blinking at the next paint, for
  // good.
  void SetWaiting(bool waiting) { waiting_ = waiting; }
  bool Waiting() const { return waiting_; }
  bool Blinking() const { return timer_.isActive(); }

  // What stands over the bar; empty in waiting mode.
  QString Text() const;

  // Where the filled part ends, from the left edge of a bar of this width.
  static int FilledWidth(int width, float percent);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void timerEvent(QTimerEvent* event) override;

 private:
  bool created_ = false;
  float percent_ = 0;
  bool waiting_ = true;
  std::int16_t blinkTick_ = 0;
  QColor barColor_{66, 132, 132};
  QBasicTimer timer_;
};

}  // namespace updown
