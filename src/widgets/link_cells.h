#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>
#include <QRect>
#include <QString>
#include <vector>

namespace updown {

// The arithmetic behind CLinkListCtrl, without a window.

// Where a link's text stands in its cell; `textSize` is the text's in the list's font. Empty for an
// empty text.
QRect LinkTextRectIn(const QRect& label, QSize textSize, Qt::Alignment alignment);

// What the mouse met at a move: a cell (row -1 off the rows), and whether it was over a link's
// text.
struct LinkHit {
  int row = 0;
  int column = 0;
  bool over = false;
};

struct HoverChange {
  int row = 0;
  int column = 0;
  bool hover = false;
};

// The changes, in their order, from one move to the next. Only links over whose text the mouse was
// or is are named.
std::vector<HoverChange> HoverChanges(const LinkHit& last, bool lastIsLink, const LinkHit& now);

// Blue, and red under the mouse; lighter ones where the palette's background is dark.
QColor LinkColor(const QPalette& palette, bool hover);

// A tip as the list shows it: its first 79 characters, as rich text that breaks at `width` pixels
// and nowhere else but at the tip's own line ends.
QString TipHtml(const QString& tip, const QFont& font, int width);

}  // namespace updown
