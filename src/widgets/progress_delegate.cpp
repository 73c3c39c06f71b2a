#include "widgets/progress_delegate.h"

#include <QAbstractItemView>
#include <QPainter>
#include <QTimerEvent>
#include <algorithm>
#include <utility>

#include "widgets/contrast.h"

namespace updown {
namespace {

constexpr int kBlinkPeriod = 150;  // ms; full and empty together take two
constexpr QColor kBar(66, 132, 132);
constexpr int kMargin = 2;
constexpr float kWhole = 100;

QColor Between(const QColor& one, const QColor& other) {
  return {(one.red() + other.red()) / 2, (one.green() + other.green()) / 2,
          (one.blue() + other.blue()) / 2};
}

void PaintBar(QPainter& painter, const QStyleOptionViewItem& option, float part,
              const QString& text) {
  const QRect frame = option.rect.adjusted(kMargin, kMargin, -kMargin, -kMargin);
  const QRect bar = frame.adjusted(1, 1, -1, -1);
  QRect filled = bar;
  filled.setWidth(static_cast<int>(static_cast<float>(bar.width()) * part));
  filled = QStyle::visualRect(option.direction, bar, filled);
  const QColor back = option.palette.color(QPalette::Base);
  const QColor wanted = option.palette.color(QPalette::Text);
  painter.fillRect(frame, Between(back, ReadableOn(back, wanted)));
  painter.fillRect(bar, back);
  painter.fillRect(filled, kBar);
  painter.setFont(option.font);
  const auto write = [&](const QRegion& clip, const QColor& color) {
    painter.setClipRegion(clip);
    painter.setPen(color);
    painter.drawText(bar, Qt::AlignCenter | Qt::TextSingleLine, text);
  };
  write(filled, ReadableOn(kBar, Qt::black));
  write(QRegion(bar) - filled, ReadableOn(back, wanted));
}

}  // namespace

// The same in every locale, as the other numbers of the list.
QString PercentText(float percent) {
  return percent < 0 ? QString() : QString::number(static_cast<double>(percent), 'f', 2) + u'%';
}

void ProgressDelegate::initStyleOption(QStyleOptionViewItem* option,
                                       const QModelIndex& index) const {
  QStyledItemDelegate::initStyleOption(option, index);
  if (index.data(kPercentRole).isValid()) {
    option->text.clear();
  }
}

void ProgressDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                             const QModelIndex& index) const {
  QStyledItemDelegate::paint(painter, option, index);
  const QVariant percent = index.data(kPercentRole);
  if (!percent.isValid()) {
    return;
  }
  painter->save();
  PaintBar(*painter, option, ShownPart(percent.toFloat(), option), PercentText(percent.toFloat()));
  painter->restore();
}

// From 0 to 1.
float ProgressDelegate::ShownPart(float percent, const QStyleOptionViewItem& option) const {
  if (percent >= 0) {
    return std::min(percent, kWhole) / kWhole;
  }
  waiting_ += option.rect;
  if (!timer_.isActive()) {
    timer_.start(kBlinkPeriod, const_cast<ProgressDelegate*>(this));
  }
  return full_ ? 1 : 0;
}

void ProgressDelegate::timerEvent(QTimerEvent* event) {
  if (event->timerId() != timer_.timerId()) {
    QStyledItemDelegate::timerEvent(event);
    return;
  }
  auto* const view = qobject_cast<QAbstractItemView*>(parent());
  if (waiting_.isEmpty() || view == nullptr) {
    timer_.stop();
    return;
  }
  full_ = !full_;
  view->viewport()->update(std::exchange(waiting_, {}));
}

}  // namespace updown
