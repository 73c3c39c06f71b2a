#include "packages/header_label.h"

#include <QPainter>
#include <algorithm>

namespace updown {
namespace {

// How much of the line is its label: up to the first colon.
qsizetype LabelLength(const QString& line) { return line.indexOf(u':') + 1; }

}  // namespace

HeaderLabel::HeaderLabel(QWidget* parent) : QLabel(parent) { setTextFormat(Qt::PlainText); }

void HeaderLabel::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setPen(palette().color(QPalette::Text));
  painter.setLayoutDirection(Qt::LeftToRight);
  const QStringList lines = text().split(u'\n');
  int valueLeft = 0;
  for (const QString& line : lines) {
    const QString label = line.left(LabelLength(line)) + QStringLiteral("  ");
    valueLeft = std::max(valueLeft, fontMetrics().horizontalAdvance(label));
  }
  QRect row(0, 0, width(), LineHeight());
  for (const QString& line : lines) {
    const qsizetype length = LabelLength(line);
    qsizetype value = length;
    while (value < line.size() && line.at(value) == u' ') {
      ++value;
    }
    painter.drawText(row, Qt::AlignLeft | Qt::AlignVCenter, line.left(length));
    painter.drawText(row.adjusted(valueLeft, 0, 0, 0),
                     Qt::AlignLeft | Qt::AlignVCenter | Qt::TextExpandTabs, line.mid(value));
    row.translate(0, row.height());
  }
}

}  // namespace updown
