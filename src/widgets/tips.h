#pragma once

#include <QString>
#include <QWidget>

namespace updown {

// Shows all of a plain text as the tip of `area` in `owner`; long lines are broken. An empty text
// takes the tip away.
void ShowTip(const QPoint& globalPosition, const QString& text, QWidget* owner, const QRect& area);

}  // namespace updown
