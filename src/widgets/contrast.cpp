#include "widgets/contrast.h"

#include <algorithm>
#include <cmath>

namespace updown {
namespace {

double Linear(double channel) {
  return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double Luminance(const QColor& color) {
  return 0.2126 * Linear(color.redF()) + 0.7152 * Linear(color.greenF()) +
         0.0722 * Linear(color.blueF());
}

}  // namespace

double Contrast(const QColor& one, const QColor& other) {
  const auto [low, high] = std::minmax({Luminance(one), Luminance(other)});
  return (high + 0.05) / (low + 0.05);
}

QColor ReadableOn(const QColor& back, const QColor& wanted) {
  constexpr double kReadable = 4.5;
  constexpr int kSteps = 30;
  constexpr int kStep = 110;  // percent
  const bool dark = Contrast(back, Qt::black) < Contrast(back, Qt::white);
  QColor color = wanted;
  for (int step = 0; step < kSteps; ++step) {
    if (Contrast(back, color) >= kReadable) {
      return color;
    }
    color = dark ? color.lighter(kStep) : color.darker(kStep);
  }
  return dark ? Qt::white : Qt::black;
}

}  // namespace updown
