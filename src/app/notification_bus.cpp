#include "app/notification_bus.h"

#include "app/session_bus.h"
#include "resources/qt/texts.h"

namespace updown {
namespace {

constexpr int kAnswerLimit = 5000;  // ms; a service that has to be started first answers late
constexpr int kServersChoice = -1;  // how long it is shown

QString ServiceName() { return u"org.freedesktop.Notifications"_qs; }
QString ObjectPath() { return u"/org/freedesktop/Notifications"_qs; }

}  // namespace

NotificationBus::~NotificationBus() {
  if (connection_ == Connection::Made) {
    QDBusConnection::disconnectFromBus(objectName());
  }
}

bool NotificationBus::Connect() {
  if (connection_ != Connection::None) {
    return connection_ == Connection::Made;
  }
  // A name of its own: the connection of others is not for this thread.
  setObjectName(u"notifications-%1"_qs.arg(quintptr(this)));
  // Without an address the bus library would start a bus of its own.
  const QString address = QString::fromStdString(SessionBusAddress());
  QDBusConnection bus = address.isEmpty() ? QDBusConnection(objectName())
                                          : QDBusConnection::connectToBus(address, objectName());
  connection_ = bus.isConnected() ? Connection::Made : Connection::Failed;
  if (connection_ == Connection::Failed) {
    QDBusConnection::disconnectFromBus(objectName());
    return false;
  }
  bus.connect(ServiceName(), ObjectPath(), ServiceName(), u"ActionInvoked"_qs, this,
              SLOT(OnActionInvoked(quint32, QString)));
  bus.connect(ServiceName(), ObjectPath(), ServiceName(), u"NotificationClosed"_qs, this,
              SLOT(OnClosed(quint32, quint32)));
  return true;
}

QDBusMessage NotificationBus::Call(const QString& method, const QVariantList& arguments) const {
  QDBusMessage call =
      QDBusMessage::createMethodCall(ServiceName(), ObjectPath(), ServiceName(), method);
  call.setArguments(arguments);
  return QDBusConnection(objectName()).call(call, QDBus::Block, kAnswerLimit);
}

bool NotificationBus::AskForMarkup() {
  const QDBusMessage reply = Call(u"GetCapabilities"_qs, {});
  if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty()) {
    markup_ = reply.arguments().constFirst().toStringList().contains(u"body-markup"_qs);
  }
  return markup_.has_value();
}

void NotificationBus::Show(const Notification& notification) {
  if (Connect() && (markup_ || AskForMarkup())) {
    const QVariantMap hints{
        {u"desktop-entry"_qs, u"net.updown.UpDown"_qs},
        {u"category"_qs, notification.kind == NotificationKind::Packages ? u"email.arrived"_qs
                         : notification.failure                          ? u"transfer.error"_qs
                                                                         : u"transfer.complete"_qs},
    };
    const QDBusMessage reply = Call(
        u"Notify"_qs,
        {Text(StringId::ProgramTitle), shown_.value(notification.kind), u"net.updown.UpDown"_qs,
         notification.summary, *markup_ ? notification.body.toHtmlEscaped() : notification.body,
         QStringList{u"default"_qs, Text(StringId::NotificationOpen)}, hints, kServersChoice});
    if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty()) {
      shown_[notification.kind] = reply.arguments().constFirst().toUInt();
    }
  }
  Q_EMIT Shown();
}

void NotificationBus::Withdraw() {
  for (const quint32 id : shown_) {
    QDBusMessage call = QDBusMessage::createMethodCall(ServiceName(), ObjectPath(), ServiceName(),
                                                       u"CloseNotification"_qs);
    call.setArguments({id});
    QDBusConnection(objectName()).send(call);
  }
  shown_.clear();
}

void NotificationBus::OnActionInvoked(quint32 id, const QString& action) {
  const auto shown = std::find(shown_.cbegin(), shown_.cend(), id);
  if (shown != shown_.cend() && action == u"default"_qs) {
    Q_EMIT Clicked(shown.key());
  }
}

// Only now may another one get the number.
void NotificationBus::OnClosed(quint32 id, quint32 /*reason*/) {
  shown_.removeIf([id](const auto& shown) { return shown.value() == id; });
}

}  // namespace updown
