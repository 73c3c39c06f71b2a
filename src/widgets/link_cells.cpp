#include "widgets/link_cells.h"

#include <QTextLayout>

namespace updown {

QRect LinkTextRectIn(const QRect& label, QSize textSize, Qt::Alignment alignment) {
  constexpr int kInset = 6;
  if (textSize.width() <= 0) {
    return {};
  }
  const int spare = (label.height() - textSize.height()) / 2;
  const QRect inner = label.adjusted(kInset, spare, -kInset, -spare);
  const QSize size(textSize.width(), inner.height());
  if ((alignment & Qt::AlignRight) != 0) {
    return {QPoint(inner.x() + inner.width() - size.width(), inner.y()), size};
  }
  if ((alignment & Qt::AlignHCenter) != 0) {
    const int side = (inner.width() - size.width()) / 2;
    return inner.adjusted(side, 0, -side, 0);
  }
  return {inner.topLeft(), size};
}

std::vector<HoverChange> HoverChanges(const LinkHit& last, bool lastIsLink, const LinkHit& now) {
  std::vector<HoverChange> changes;
  const HoverChange leave{last.row, last.column, false};
  const HoverChange enter{now.row, now.column, true};
  if (last.row != now.row || last.column != now.column) {
    if (lastIsLink && last.over) {
      changes.push_back(leave);
    }
    if (now.over) {
      changes.push_back(enter);
    }
  } else if (last.over != now.over) {
    changes.push_back(last.over ? leave : enter);
  }
  return changes;
}

QColor LinkColor(const QPalette& palette, bool hover) {
  const bool dark = qGray(palette.color(QPalette::Base).rgb()) < 128;
  if (hover) {
    return dark ? QColor(255, 112, 112) : QColor(255, 0, 0);
  }
  return dark ? QColor(120, 170, 255) : QColor(0, 0, 255);
}

QString TipHtml(const QString& tip, const QFont& font, int width) {
  constexpr int kShown = 79;
  QString shown = tip.left(kShown);
  if (shown.size() == kShown && shown.back().isHighSurrogate()) {
    shown.chop(1);
  }
  shown.remove(QLatin1Char('\r'));
  QStringList lines;
  for (const QString& line : shown.split(QLatin1Char('\n'))) {
    QTextLayout layout(line, font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    for (QTextLine part = layout.createLine(); part.isValid(); part = layout.createLine()) {
      part.setLineWidth(width);
      lines << line.mid(part.textStart(), part.textLength()).toHtmlEscaped();
    }
    layout.endLayout();
  }
  return QStringLiteral("<div style='white-space:pre'>") + lines.join(QStringLiteral("<br>")) +
         QStringLiteral("</div>");
}

}  // namespace updown
