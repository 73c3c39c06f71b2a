#include "packages/field_value.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>

#include "widgets/tips.h"

namespace updown {
namespace {

constexpr int kTextMargin = 2;           // what QLineEdit leaves beside its text
constexpr qsizetype kLongestTip = 2000;  // characters

}  // namespace

FieldValue::FieldValue(QWidget* parent) : QLineEdit(parent) {
  setReadOnly(true);
  setFrame(false);
  // Beside its label, whichever way the value itself is read.
  setAlignment((isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignAbsolute |
               Qt::AlignVCenter);
  setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

void FieldValue::SetValue(const QString& value) {
  if (value != text()) {
    setText(value);
    setCursorPosition(0);
  }
}

QRect FieldValue::TextRect() const { return rect().adjusted(kTextMargin, 0, -kTextMargin, 0); }

bool FieldValue::IsCut() const {
  return fontMetrics().horizontalAdvance(text()) > TextRect().width();
}

bool FieldValue::event(QEvent* event) {
  if (event->type() != QEvent::ToolTip) {
    return QLineEdit::event(event);
  }
  const auto* help = static_cast<QHelpEvent*>(event);
  ShowTip(help->globalPos(), IsCut() ? text().left(kLongestTip) : QString(), this, rect());
  return true;
}

void FieldValue::paintEvent(QPaintEvent* event) {
  if (hasFocus() || hasSelectedText() || !IsCut()) {
    QLineEdit::paintEvent(event);
    return;
  }
  QPainter painter(this);
  const QRect area = TextRect();
  painter.setPen(palette().color(QPalette::Text));
  painter.drawText(area,
                   static_cast<int>(Qt::AlignVCenter | Qt::TextSingleLine) |
                       static_cast<int>(QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft)),
                   fontMetrics().elidedText(text(), Qt::ElideRight, area.width()));
}

}  // namespace updown
