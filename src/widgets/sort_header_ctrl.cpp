#include "widgets/sort_header_ctrl.h"

#include <QPainter>
#include <cmath>

namespace updown {
namespace {

int Quarter(const QRect& item) { return item.height() / 4; }

// The last point that a stroke covers: one step before its end, along its longer axis.
QPoint LastPoint(const ArrowStroke& stroke) {
  const QPoint way = stroke.to - stroke.from;
  const int length = std::max(std::abs(way.x()), std::abs(way.y()));
  if (length == 0) {
    return stroke.from;
  }
  const double part = static_cast<double>(length - 1) / length;
  return stroke.from + QPoint(static_cast<int>(std::lround(way.x() * part)),
                              static_cast<int>(std::lround(way.y() * part)));
}

// `color` as it is if it differs enough from the header's face, else on its way to the text's
// colour: on flat palettes the light and dark shades of a button can hardly be told from its face.
QColor Visible(const QColor& color, const QPalette& palette, int difference) {
  constexpr int kSteps = 10;
  const int face = qGray(palette.color(QPalette::Button).rgb());
  const QColor text = palette.color(QPalette::ButtonText);
  QColor mixed = color;
  for (int i = 1; i <= kSteps && std::abs(qGray(mixed.rgb()) - face) < difference; ++i) {
    const auto mix = [i](int from, int to) { return from + (to - from) * i / kSteps; };
    mixed = QColor(mix(color.red(), text.red()), mix(color.green(), text.green()),
                   mix(color.blue(), text.blue()));
  }
  return mixed;
}

}  // namespace

std::array<ArrowStroke, 3> SortArrow(const QRect& item, bool ascending) {
  const int u = Quarter(item);
  const int r = item.x() + item.width();
  const int t = item.y();
  const int b = item.y() + item.height();
  if (ascending) {
    return {{{true, {r - 2 * u, t + u}, {r - u, b - u - 1}},
             {true, {r - u, b - u - 1}, {r - 3 * u - 2, b - u - 1}},
             {false, {r - 3 * u - 1, b - u - 1}, {r - 2 * u, t + u - 1}}}};
  }
  return {{{true, {r - u - 1, t + u}, {r - 2 * u - 1, b - u}},
           {false, {r - 2 * u - 2, b - u}, {r - 3 * u - 1, t + u}},
           {false, {r - 3 * u - 1, t + u}, {r - u - 1, t + u}}}};
}

QRect HeaderTextRect(const QRect& item, bool hasArrow) {
  const int u = Quarter(item);
  return item.adjusted(u, 0, hasArrow ? -4 * u : -u, 0);
}

CSortHeaderCtrl::CSortHeaderCtrl(QWidget* parent) : QHeaderView(Qt::Horizontal, parent) {
  setObjectName(QStringLiteral("sortHeader"));
  setSectionsClickable(true);
  setHighlightSections(false);
  setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
}

void CSortHeaderCtrl::SetSortColumn(int column) {
  ascending_ = column != sortColumn_ || !ascending_;
  sortColumn_ = column;
  viewport()->update();
}

void CSortHeaderCtrl::paintSection(QPainter* painter, const QRect& rect, int column) const {
  constexpr int kMostCharacters = 255;
  const QAbstractItemModel* source = model();
  const bool hasArrow = column == sortColumn_;
  painter->save();
  painter->setClipRect(rect);
  painter->fillRect(rect, palette().color(QPalette::Button));
  painter->setPen(palette().color(QPalette::Mid));
  painter->drawLine(rect.topRight(), rect.bottomRight());
  painter->drawLine(rect.bottomLeft(), rect.bottomRight());

  const QRect textRect = HeaderTextRect(rect, hasArrow);
  if (source != nullptr && textRect.width() > 0) {
    const QVariant format = source->headerData(column, orientation(), Qt::TextAlignmentRole);
    const auto alignment =
        format.isValid() ? Qt::Alignment(format.toInt()) : Qt::Alignment(defaultAlignment());
    const QString text =
        source->headerData(column, orientation(), Qt::DisplayRole).toString().left(kMostCharacters);
    painter->setPen(palette().color(QPalette::ButtonText));
    painter->drawText(textRect,
                      static_cast<int>(alignment & Qt::AlignHorizontal_Mask) | Qt::AlignVCenter |
                          Qt::TextSingleLine | Qt::TextDontClip,
                      fontMetrics().elidedText(text, Qt::ElideRight, textRect.width()));
  }
  if (hasArrow) {
    constexpr int kLightDifference = 60;
    constexpr int kDarkDifference = 110;
    const QColor light = Visible(palette().color(QPalette::Light), palette(), kLightDifference);
    const QColor dark = Visible(palette().color(QPalette::Dark), palette(), kDarkDifference);
    for (const ArrowStroke& stroke : SortArrow(rect, ascending_)) {
      painter->setPen(stroke.light ? light : dark);
      painter->drawLine(stroke.from, LastPoint(stroke));
    }
  }
  painter->restore();
}

}  // namespace updown
