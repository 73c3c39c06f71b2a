#include "widgets/tips.h"

#include <QHelpEvent>
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

CellTips::CellTips(QAbstractItemView* view) : QObject(view), view_(view) {
  view_->viewport()->installEventFilter(this);
}

bool CellTips::eventFilter(QObject* watched, QEvent* event) {
  Q_UNUSED(watched);
  if (event->type() != QEvent::ToolTip) {
    return false;
  }
  const auto* help = static_cast<QHelpEvent*>(event);
  const QModelIndex index = view_->indexAt(help->pos());
  const QString tip = TipOf(index);
  ShowTip(help->globalPos(), tip, view_->viewport(), view_->visualRect(index));
  event->setAccepted(!tip.isEmpty());
  return true;
}

QString CellTips::TipOf(const QModelIndex& index) const {
  if (const QString tip = index.data(Qt::ToolTipRole).toString(); !tip.isEmpty()) {
    return tip;
  }
  const QRect shown = view_->visualRect(index) & view_->viewport()->rect();
  const int needed = view_->sizeHintForIndex(index).width();
  return needed > shown.width() ? index.data().toString() : QString();
}

}  // namespace updown
