#pragma once

#include <QStringList>
#include <QThread>
#include <QTimer>
#include <chrono>
#include <memory>

#include "app/notification_bus.h"

namespace updown {

// Tells what has happened while no window of the program is the active one: what comes within a
// second is one notification, and what comes while that stands becomes part of it. Coming back to
// the program takes all of them away. Main thread; never waits.
class DesktopNotifications : public QObject {
  Q_OBJECT

 public:
  explicit DesktopNotifications(std::chrono::milliseconds collect = std::chrono::seconds(1));
  ~DesktopNotifications() override;

  // Whether a window of the program is the active one; at first none is.
  void SetActive(bool active);

  // `failure` says why; empty if the file has arrived.
  void TransferEnded(const QString& file, const QString& failure);
  void PackageCame(const QString& name);

  // The end, in two steps. False if a bus that does not answer holds the thread longer; that is
  // left to the process's end then.
  void BeginEnd();
  bool WaitForEnd(std::chrono::milliseconds limit);

 Q_SIGNALS:
  void Clicked(updown::NotificationKind kind);
  void Wanted(const updown::Notification& notification);  // for the other thread
  void Withdrawn();

 private:
  void Collect(NotificationKind kind);
  void Tell();
  Notification OfTransfers() const;
  Notification OfPackages() const;

  QTimer collect_;
  bool active_ = false;
  QString file_;  // the last one, and why it failed
  int finished_ = 0;
  int failed_ = 0;
  QString package_;  // the last one
  int packages_ = 0;
  QList<NotificationKind> untold_;
  bool telling_ = false;       // the other thread has one in hand
  QThread* thread_ = nullptr;  // started by the first notification; lost if it cannot be ended
};

}  // namespace updown
