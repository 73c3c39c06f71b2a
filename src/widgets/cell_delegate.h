#pragma once

#include <QGuiApplication>
#include <QStyledItemDelegate>

namespace updown {

// Cells as the toolkit paints them, but that names, amounts, times and paths keep their own
// direction also where the windows run from right to left.
class CellDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  QString displayText(const QVariant& value, const QLocale& locale) const override {
    constexpr QChar kIsolate(0x2068);
    constexpr QChar kEndOfIsolate(0x2069);
    const QString text = QStyledItemDelegate::displayText(value, locale);
    return QGuiApplication::isRightToLeft() ? kIsolate + text + kEndOfIsolate : text;
  }
};

}  // namespace updown
