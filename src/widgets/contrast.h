#pragma once

#include <QColor>

namespace updown {

// As accessibility guidelines define it: 1 for the same colour, 21 for black on white.
double Contrast(const QColor& one, const QColor& other);

// `wanted` if that can be read on `back`, with a contrast of at least 4.5; else the nearest that
// can: lighter or darker, at the end white or black.
QColor ReadableOn(const QColor& back, const QColor& wanted);

}  // namespace updown
