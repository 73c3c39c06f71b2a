#include "demo/stored_tasks.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <cstdint>

#include "demo/walk_package.h"

namespace updown::demo {

namespace {

// tag, length (big-endian), value
QByteArray Attribute(int tag, const QByteArray& value) {
  QByteArray bytes;
  bytes.append(static_cast<char>(tag));
  bytes.append(static_cast<char>(value.size() >> 8));
  bytes.append(static_cast<char>(value.size()));
  return bytes + value;
}

QByteArray Number(int tag, std::uint32_t number) {
  QByteArray value;
  for (int shift = 0; shift < 32; shift += 8) {
    value.append(static_cast<char>(number >> shift));
  }
  return Attribute(tag, value);
}

QByteArray Record(std::uint32_t id, bool folder, const QString& remote, const QString& local) {
  return Number(1, 0) + Attribute(2, remote.toUtf8()) + Attribute(3, local.toUtf8()) +
         Number(4, 0) + Number(5, 0) + Number(6, 0) + Number(7, id) + Number(8, 0) +
         Number(9, folder ? 1 : 0) + Number(10, 0) + QByteArray(1, '\xFF');
}

}  // namespace

void WriteStoredTasks(const QString& dataFolder, const QString& identity, const QString& received) {
  const QString package = u'/' + QString::fromLatin1(kWalkPackage);
  const QByteArray hash =
      QCryptographicHash::hash((identity + QStringLiteral("-user-DBDC")).toUtf8(),
                               QCryptographicHash::Md5)
          .toHex();
  QDir(dataFolder).mkpath(QStringLiteral("oxapp"));
  QFile file(dataFolder + QStringLiteral("/oxapp/") + QString::fromLatin1(hash) +
             QStringLiteral(".lst"));
  const QByteArray bytes = Record(1, false, package + QStringLiteral("/agenda.txt"),
                                  received + QStringLiteral("/stored.txt")) +
                           Record(2, true, package, received + QStringLiteral("/stored"));
  if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
    qFatal("cannot write %s", qUtf8Printable(file.fileName()));
  }
}

}  // namespace updown::demo
