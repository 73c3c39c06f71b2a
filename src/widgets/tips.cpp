#include "widgets/tips.h"

#include <QTextLayout>
#include <QToolTip>

namespace updown {
namespace {

constexpr int kCharactersInLine = 60;

// Rich text that breaks nowhere else but here: names and paths have no blanks to break at.
QString BrokenLines(QString text) {
  const QFont font = QToolTip::font();
  const qreal width = kCharactersInLine * QFontMetricsF(font).averageCharWidth();
  QTextOption option;
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  QStringList lines;
  for (const QString& line : text.remove(u'\r').split(u'\n')) {
    QTextLayout layout(line, font);
    layout.setTextOption(option);
    layout.beginLayout();
    for (QTextLine part = layout.createLine(); part.isValid(); part = layout.createLine()) {
      part.setLineWidth(width);
      lines << line.mid(part.textStart(), part.textLength()).toHtmlEscaped();
    }
    layout.endLayout();
  }
  return u"<div style='white-space:pre'>"_qs + lines.join(u"<br>"_qs) + u"</div>"_qs;
}

}  // namespace

void ShowTip(const QPoint& globalPosition, const QString& text, QWidget* owner, const QRect& area) {
  if (text.isEmpty()) {
    QToolTip::hideText();
  } else {
    QToolTip::showText(globalPosition, BrokenLines(text), owner, area);
  }
}

}  // namespace updown
