#include "demo/conductor.h"

#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcessEnvironment>
#include <cstdio>

#include "demo/stored_tasks.h"
#include "demo/walk_package.h"

namespace updown::demo {

namespace {

constexpr int kLegLimitMs = 100000;
constexpr int kLineWaitMs = 200;
constexpr std::uint32_t kWholeFiles = 4194304;  // each file of the walk in one block

QByteArray Sha256Of(const QString& path) {
  QFile file(path);
  QCryptographicHash hash(QCryptographicHash::Sha256);
  if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file)) {
    return {};
  }
  return hash.result().toHex();
}

void Say(const QString& text) {
  std::printf("%s\n", qUtf8Printable(text));
  std::fflush(stdout);
}

}  // namespace

Conductor::Conductor(WalkOptions options) : options_(std::move(options)) {}

int Conductor::Run() {
  using Service = LegPlan::Service;
  const QList<LegPlan> plans = {
      {QStringLiteral("empty"), QStringLiteral("a"), Service::Empty, {}},
      {QStringLiteral("browse"), QStringLiteral("b"), Service::Full, {}},
      {QStringLiteral("save"), QStringLiteral("c"), Service::Full, {}},
      {QStringLiteral("resume"), QStringLiteral("c"), Service::Full, {}},
      {QStringLiteral("steer"), QStringLiteral("d"), Service::Full, {}},
      {QStringLiteral("steer-again"), QStringLiteral("d"), Service::Full, {}},
      {QStringLiteral("stored"), QStringLiteral("g"), Service::Full, {}},
      {QStringLiteral("limit"), QStringLiteral("e"), Service::Full, {}},
      {QStringLiteral("login"), QStringLiteral("f"), Service::WithLogin, {}},
      {QStringLiteral("keyboard"), QStringLiteral("h"), Service::Full, {}},
      {QStringLiteral("save-all"), QStringLiteral("i"), Service::Full, {}},
      {QStringLiteral("several"), QStringLiteral("q"), Service::Full, {}},
      {QStringLiteral("arrange"), QStringLiteral("j"), Service::Full, {}},
      {QStringLiteral("arranged"), QStringLiteral("j"), Service::Full, {}},
      {QStringLiteral("plain"), QStringLiteral("k"), Service::Full, {}},
      {QStringLiteral("double"), QStringLiteral("l"), Service::Full, QStringLiteral("2")},
      {QStringLiteral("dark"), QStringLiteral("m"), Service::Full, {}},
      {QStringLiteral("large"), QStringLiteral("n"), Service::Full, {}},
      {QStringLiteral("right-to-left"), QStringLiteral("o"), Service::Full, {}},
      {QStringLiteral("other-style"), QStringLiteral("p"), Service::Full, {}},
  };
  QDir().mkpath(options_.pictures);
  MakeAreas();
  QElapsedTimer clock;
  clock.start();
  for (const LegPlan& plan : plans) {
    if (!options_.legs.isEmpty() && !options_.legs.contains(plan.name)) {
      continue;
    }
    Say(QStringLiteral("[dialect %1, language %2] %3")
            .arg(options_.dialect)
            .arg(options_.language)
            .arg(plan.name));
    if (!RunLeg(plan)) {
      Say(QStringLiteral("FAILED in %1").arg(plan.name));
      return 1;
    }
  }
  Say(QStringLiteral("Everything held, in dialect %1, in %2 s; pictures are in %3")
          .arg(options_.dialect)
          .arg(clock.elapsed() / 1000)
          .arg(options_.pictures));
  return 0;
}

void Conductor::MakeAreas() {
  const QString area = place_.filePath(QStringLiteral("area"));
  peer::MakeArea({area.toStdString(), options_.packages, 1, options_.language});
  QDir().mkpath(place_.filePath(QStringLiteral("empty")));
}

bool Conductor::RunLeg(const LegPlan& plan) {
  MakeWalkPackage(place_.filePath(QStringLiteral("area")));  // an earlier leg deletes from it
  const QString data = FolderOf(plan, QStringLiteral("data-"));
  const QString received = FolderOf(plan, QStringLiteral("received-"));
  const peer::Options served = ServiceFor(plan);
  if (plan.name == u"stored") {
    WriteStoredTasks(data, QString::fromStdString(served.identity), received);
  }
  peer::StandIn service(served);

  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  for (const auto& [name, value] : service.Environment(options_.language)) {
    environment.insert(QString::fromStdString(name), QString::fromStdString(value));
  }
  environment.insert(QStringLiteral("XDG_DATA_HOME"), data);
  environment.insert(QStringLiteral("XDG_STATE_HOME"), data);
  environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
  if (!plan.scale.isEmpty()) {
    environment.insert(QStringLiteral("QT_SCALE_FACTOR"), plan.scale);
  }
  QProcess client;
  client.setProcessEnvironment(environment);
  client.setStandardErrorFile(options_.pictures + QStringLiteral("/client.log"), QIODevice::Append);
  const QString prefix =
      QStringLiteral("d%1-%2-%3").arg(options_.dialect).arg(options_.language).arg(plan.name);
  client.start(options_.program,
               {QStringLiteral("-s"), QStringLiteral("fileservice"), QStringLiteral("-p"),
                QStringLiteral("8100"), QStringLiteral("--leg"), plan.name,
                QStringLiteral("--pictures"), options_.pictures, QStringLiteral("--prefix"), prefix,
                QStringLiteral("--received"), received});
  return Accompany(client, service);
}

// The legs of a desk share both folders.
QString Conductor::FolderOf(const LegPlan& plan, const QString& kind) const {
  QString path = place_.filePath(kind + plan.desk);
  QDir().mkpath(path);
  return path;
}

peer::Options Conductor::ServiceFor(const LegPlan& plan) const {
  const bool empty = plan.service == LegPlan::Service::Empty;
  peer::Options service;
  service.root =
      place_.filePath(empty ? QStringLiteral("empty") : QStringLiteral("area")).toStdString();
  service.dialect = options_.dialect;
  service.blockLength = plan.name == u"stored" ? kWholeFiles : options_.block;
  // The same for all legs of a desk, and another one for each walk on this machine.
  service.identity = (QDir(place_.path()).dirName() + plan.desk).toStdString();
  if (plan.service == LegPlan::Service::WithLogin) {
    service.login = peer::Login{"maria", "correct horse", "office"};
  }
  return service;
}

// Says what the client says and does what it asks for, until it ends.
bool Conductor::Accompany(QProcess& client, peer::StandIn& service) {
  bool held = true;
  killed_ = false;
  QElapsedTimer clock;
  clock.start();
  while (client.state() != QProcess::NotRunning || client.canReadLine()) {
    if (!client.canReadLine() && !client.waitForReadyRead(kLineWaitMs) &&
        clock.elapsed() > kLegLimitMs) {
      client.kill();
      client.waitForFinished();
      Say(QStringLiteral("  the leg took too long"));
      return false;
    }
    while (client.canReadLine()) {
      const QString line = QString::fromUtf8(client.readLine()).trimmed();
      if (line.startsWith(u'@')) {
        held = Obey(line.mid(1), service, client) && held;
      } else {
        Say(QStringLiteral("  ") + line);
      }
    }
  }
  const bool ended =
      killed_ || (client.exitStatus() == QProcess::NormalExit && client.exitCode() == 0);
  return held && ended;
}

// What a leg asks of the service's side, one line each, answered by one line.
bool Conductor::Obey(const QString& request, peer::StandIn& service, QProcess& client) {
  const QStringList words = request.split(u'\t');
  bool held = true;
  if (words[0] == u"block") {
    service.SetBlockLength(words[1].toUInt());
  } else if (words[0] == u"forget-sessions") {
    service.ForgetSessions();
  } else if (words[0] == u"compare") {
    held = Compare(words[1], words[2]);
  } else if (words[0] == u"gone") {
    held = !QFile::exists(place_.filePath(QStringLiteral("area")) + words[1]);
    Say(QStringLiteral("  %1  %2 is gone from the service")
            .arg(held ? u"ok"_qs : u"NO"_qs, words[1]));
  } else if (words[0] == u"add-package") {
    MakeWalkPackage(place_.filePath(QStringLiteral("area")), QStringLiteral("20261122093000"));
  } else if (words[0] == u"kill") {
    killed_ = true;
    client.kill();
    return client.waitForFinished();
  } else {
    Say(QStringLiteral("  unknown request: ") + request);
    return false;
  }
  client.write("done\n");
  return held;
}

bool Conductor::Compare(const QString& remote, const QString& local) {
  const QByteArray sent = Sha256Of(place_.filePath(QStringLiteral("area")) + remote);
  const QByteArray received = Sha256Of(local);
  const bool equal = !sent.isEmpty() && sent == received;
  Say(QStringLiteral("  %1  SHA-256 of %2 is %3 on both sides")
          .arg(equal ? QStringLiteral("ok") : QStringLiteral("NO"), remote,
               equal ? QString::fromLatin1(sent.left(16)) + u"..."_qs
                     : QStringLiteral("not the same")));
  return equal;
}

}  // namespace updown::demo
