#include "widgets/progress_painter.h"

#include <QAccessible>
#include <QPainter>
#include <QTimerEvent>
#include <algorithm>

namespace updown {
namespace {

constexpr int kBlinkPeriod = 150;  // ms; full and empty together take two
constexpr int kFontHeight = 12;

}  // namespace

CProgressPainter::CProgressPainter(QWidget* parent) : QWidget(parent) {
  setAttribute(Qt::WA_OpaquePaintEvent);
  setAttribute(Qt::WA_TransparentForMouseEvents);
}

void CProgressPainter::Create() {
  created_ = true;
  timer_.start(kBlinkPeriod, this);
  blinkTick_ = 0;
  SetPercent(0);
}

int CProgressPainter::SetPercent(float percent) {
  if (!created_) {
    return -1;
  }
  percent_ = percent;
  repaint();
  if (!waiting_ && QAccessible::isActive()) {
    QAccessibleValueChangeEvent event(this, percent);
    QAccessible::updateAccessibility(&event);
  }
  return 0;
}

QString CProgressPainter::Text() const {
  return waiting_ ? QString() : QString::asprintf("%.2f%%", static_cast<double>(percent_));
}

int CProgressPainter::FilledWidth(int width, float percent) {
  constexpr double kPart = 0.01;
  const double filled = static_cast<double>(percent) * kPart * width;
  return static_cast<int>(std::clamp(filled, 0.0, static_cast<double>(width)));
}

void CProgressPainter::paintEvent(QPaintEvent* event) {
  Q_UNUSED(event);
  if (!waiting_) {
    timer_.stop();
  }
  const QRect client = contentsRect();
  const int split = FilledWidth(client.width(), percent_);
  const QRect filled(client.left(), client.top(), split, client.height());
  const QRect rest(client.left() + split, client.top(), client.width() - split, client.height());

  QPainter painter(this);
  if (client != rect()) {
    painter.fillRect(rect(), palette().color(QPalette::WindowText));
  }
  const QColor back = palette().color(QPalette::Base);
  painter.fillRect(filled, barColor_);
  painter.fillRect(rest, back);

  QFont small = font();
  small.setPixelSize(kFontHeight);
  painter.setFont(small);
  // The bar's own colour bears black text on every palette; the rest may be dark.
  const QColor onBack =
      qGray(back.rgb()) < 128 ? palette().color(QPalette::Text) : QColor(Qt::black);
  const auto drawPart = [&](const QRect& part, const QColor& color) {
    painter.setClipRect(part);
    painter.setPen(color);
    painter.drawText(client, Qt::AlignCenter | Qt::TextSingleLine, Text());
  };
  drawPart(filled, Qt::black);
  drawPart(rest, onBack);
}

void CProgressPainter::timerEvent(QTimerEvent* event) {
  if (event->timerId() != timer_.timerId()) {
    QWidget::timerEvent(event);
    return;
  }
  // A bar that is never painted leaves waiting mode here; a tick must not overwrite its percentage.
  if (!waiting_) {
    timer_.stop();
    return;
  }
  constexpr float kFull = 100;
  SetPercent(blinkTick_ % 2 == 0 ? kFull : 0);
  ++blinkTick_;
}

}  // namespace updown
