#pragma once

#include <QCursor>
#include <QGuiApplication>

namespace updown {

// Shows the busy pointer while the main thread waits for the service.
class BusyPointer {
 public:
  BusyPointer() { QGuiApplication::setOverrideCursor(QCursor(Qt::WaitCursor)); }
  ~BusyPointer() { QGuiApplication::restoreOverrideCursor(); }
  BusyPointer(const BusyPointer&) = delete;
  BusyPointer& operator=(const BusyPointer&) = delete;
};

}  // namespace updown
