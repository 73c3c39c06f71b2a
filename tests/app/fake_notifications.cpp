// A notification service for tests, as a process on the session bus of its environment. It prints a
// line for each call, takes the body for markup, and reads from its input: "click ID", "close ID".
#include <unistd.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusContext>
#include <QSocketNotifier>
#include <algorithm>
#include <cstdio>

class Service : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

 public Q_SLOTS:
  static QStringList GetCapabilities() {
    return {QStringLiteral("body"), QStringLiteral("body-markup"), QStringLiteral("actions")};
  }
  quint32 Notify(const QString& /*program*/, quint32 replaced, const QString& /*icon*/,
                 const QString& summary, const QString& body, const QStringList& actions,
                 const QVariantMap& hints, int /*timeout*/) {
    const quint32 id = replaced != 0 ? replaced : ++last_;
    Say({QStringLiteral("notify"), QString::number(id), summary, QString(body).replace(u'\n', u'/'),
         actions.value(0), hints.value(QStringLiteral("category")).toString()});
    return id;
  }
  void CloseNotification(quint32 id) {
    Say({QStringLiteral("close"), QString::number(id)});
    Q_EMIT NotificationClosed(id, 3);
  }

 Q_SIGNALS:
  void ActionInvoked(quint32 id, const QString& action);
  void NotificationClosed(quint32 id, quint32 reason);

 private:
  static void Say(const QStringList& words) {
    std::puts(qPrintable(words.join(u'|')));
    std::fflush(stdout);
  }

  quint32 last_ = 0;
};

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  Service service;
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.registerObject(QStringLiteral("/org/freedesktop/Notifications"), &service,
                          QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals) ||
      !bus.registerService(QStringLiteral("org.freedesktop.Notifications"))) {
    return 1;
  }
  std::puts("ready");
  std::fflush(stdout);
  QSocketNotifier commands(STDIN_FILENO, QSocketNotifier::Read);
  QObject::connect(&commands, &QSocketNotifier::activated, &service, [&] {
    QByteArray input(4096, 0);  // whole lines: they are short, and written at once
    input.resize(std::max<ssize_t>(0, read(STDIN_FILENO, input.data(), input.size())));
    if (input.isEmpty()) {
      QCoreApplication::quit();
    }
    for (const QByteArray& line : input.split('\n')) {
      const QList<QByteArray> words = line.split(' ');
      if (words[0] == "click") {
        Q_EMIT service.ActionInvoked(words[1].toUInt(), QStringLiteral("default"));
      } else if (words[0] == "close") {
        Q_EMIT service.NotificationClosed(words[1].toUInt(), 2);
      }
    }
  });
  return QCoreApplication::exec();
}

#include "fake_notifications.moc"
