#include "packages/group_frame.h"

#include <QPainter>

namespace updown {
namespace {

constexpr int kCaptionIndent = 8;
constexpr int kCaptionMargin = 3;
constexpr qreal kLineOpacity = 0.25;

}  // namespace

void GroupFrame::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const QFontMetrics metrics = fontMetrics();
  QRect caption(kCaptionIndent, 0, metrics.horizontalAdvance(title()) + 2 * kCaptionMargin,
                metrics.height());
  if (isRightToLeft()) {
    caption.moveRight(rect().right() - kCaptionIndent);
  }
  painter.setClipRegion(QRegion(rect()) - caption);
  QColor line = palette().color(QPalette::Text);
  line.setAlphaF(kLineOpacity);
  painter.setPen(line);
  painter.drawRect(rect().adjusted(0, metrics.height() / 2, -1, -1));
  painter.setClipping(false);
  painter.setPen(palette().color(QPalette::Text));
  painter.drawText(caption, Qt::AlignCenter, title());
}

}  // namespace updown
