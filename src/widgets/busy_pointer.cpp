#include "widgets/busy_pointer.h"

#include <QApplication>
#include <QEvent>
#include <QWidget>

namespace updown {

BusyPointer::BusyPointer() {
  QApplication::setOverrideCursor(Qt::WaitCursor);
  qApp->installEventFilter(this);
}

BusyPointer::~BusyPointer() {
  if (boxes_ == 0) {
    QApplication::restoreOverrideCursor();
  }
}

bool BusyPointer::eventFilter(QObject* watched, QEvent* event) {
  const bool shown = event->type() == QEvent::Show;
  if ((!shown && event->type() != QEvent::Hide) || event->spontaneous() ||
      !watched->isWidgetType()) {
    return false;
  }
  const auto* widget = static_cast<QWidget*>(watched);
  if (!widget->isWindow() || !widget->isModal()) {
    return false;
  }
  if (shown && boxes_++ == 0) {
    QApplication::restoreOverrideCursor();
  } else if (!shown && boxes_ > 0 && --boxes_ == 0) {
    QApplication::setOverrideCursor(Qt::WaitCursor);
  }
  return false;
}

}  // namespace updown
