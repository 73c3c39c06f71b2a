#include "packages/column_header.h"

#include <QEvent>

namespace updown {
namespace {

constexpr int kLeastCharacters = 7;

}  // namespace

ColumnHeader::ColumnHeader(std::vector<int> characters, int stretched, QAbstractItemView* view)
    : QHeaderView(Qt::Horizontal, view), characterWidth_(fontMetrics().horizontalAdvance(u'0')) {
  setObjectName(u"sortHeader"_qs);
  setModel(view->model());
  setRootIndex(view->rootIndex());
  setSectionsClickable(true);
  setSortIndicator(-1, Qt::AscendingOrder);  // else column 0 would be sorted at once
  setStretchLastSection(false);
  setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  setMinimumSectionSize(kLeastCharacters * characterWidth_);
  for (int column = 0; column < count(); ++column) {
    resizeSection(column, characters.at(static_cast<std::size_t>(column)) * characterWidth_);
  }
  setSectionResizeMode(stretched, Stretch);
}

void ColumnHeader::changeEvent(QEvent* event) {
  QHeaderView::changeEvent(event);
  const int width = fontMetrics().horizontalAdvance(u'0');
  if (event->type() != QEvent::FontChange || width == characterWidth_) {
    return;
  }
  setMinimumSectionSize(kLeastCharacters * width);
  for (int column = 0; column < count(); ++column) {
    if (sectionResizeMode(column) != Stretch) {
      resizeSection(column, sectionSize(column) * width / characterWidth_);
    }
  }
  characterWidth_ = width;
}

}  // namespace updown
