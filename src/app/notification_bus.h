#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QMap>
#include <QObject>
#include <QString>
#include <optional>

namespace updown {

// What a notification is about: there is at most one of each on the screen.
enum class NotificationKind { Transfers, Packages };

struct Notification {
  NotificationKind kind = NotificationKind::Transfers;
  QString summary;
  QString body;  // plain text
  bool failure = false;
};

// The desktop's notifications (org.freedesktop.Notifications on the session bus). Lives on a thread
// of its own, as both to connect and to be answered may take long: a bus that does not answer holds
// the connecting for half a minute. Connects when the first notification is to be shown. Without a
// bus or a service nothing is shown, and nothing is told.
class NotificationBus : public QObject {
  Q_OBJECT

 public:
  ~NotificationBus() override;

  // On its thread. Shown follows in any case.
  void Show(const Notification& notification);
  void Withdraw();  // all of them

 Q_SIGNALS:
  void Shown();
  void Clicked(updown::NotificationKind kind);

 private Q_SLOTS:
  void OnActionInvoked(quint32 id, const QString& action);
  void OnClosed(quint32 id, quint32 reason);

 private:
  enum class Connection { None, Made, Failed };

  bool Connect();
  bool AskForMarkup();
  QDBusMessage Call(const QString& method, const QVariantList& arguments) const;

  Connection connection_ = Connection::None;
  std::optional<bool> markup_;  // whether the service takes the body for markup
  QMap<NotificationKind, quint32> shown_;
};

}  // namespace updown
