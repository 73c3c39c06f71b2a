#include "demo/walk_package.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <random>

namespace updown::demo {

namespace {

void WriteFile(const QString& path, const QByteArray& bytes, qint64 time) {
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush() ||
      !file.setFileTime(QDateTime::fromSecsSinceEpoch(time), QFileDevice::FileModificationTime)) {
    qFatal("cannot write %s", qUtf8Printable(path));
  }
}

}  // namespace

void MakeWalkPackage(const QString& area, const QString& name) {
  QDir(area).mkpath(name);
  const QString folder = area + u'/' + name + u'/';
  constexpr qint64 kTime = 1795334400;

  QByteArray header =
      "[Tallbin]\r\nTXT_From=Ilse Marek <ilse.marek@harbour.example>\r\n"
      "Send_Time=2026-11-22 08:00:00\r\nTXT_To=Team North; Jon Abara\r\nTXT_CC=Records\r\n";
  header += QByteArray("TXT_Subject=") + kWalkSubject + "\r\n";
  header +=
      "TXT_Notes=Dear all,\xFF\xFF\xFF\xFFthe figures of the third quarter and the photos of "
      "both sites are attached.\xFF\xFFPlease read the agenda before Thursday.\xFF\xFF\xFF\xFF"
      "Ilse\r\n";
  WriteFile(folder + name + QStringLiteral("_Start.ini"), header, kTime);
  WriteFile(folder + name + QStringLiteral(".ini"), header, kTime);

  std::mt19937 random(20261122);
  for (const WalkFile& file : kWalkFiles) {
    QByteArray bytes(file.bytes, Qt::Uninitialized);
    for (char& byte : bytes) {
      byte = static_cast<char>(random());
    }
    WriteFile(folder + QString::fromLatin1(file.name), bytes, kTime + file.bytes);
  }
}

}  // namespace updown::demo
