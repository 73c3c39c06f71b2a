#include "widgets/splitters.h"

namespace updown {

CMySplitter::CMySplitter(Qt::Orientation orientation, QWidget* parent)
    : QSplitter(orientation, parent) {
  constexpr int kBarWidth = 4;
  setHandleWidth(kBarWidth);
  setChildrenCollapsible(true);
}

}  // namespace updown
