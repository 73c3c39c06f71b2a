#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <cstdint>
#include <memory>
#include <optional>

#include "peer/make_area.h"
#include "peer/stand_in.h"

namespace updown::demo {

struct WalkOptions {
  QString program;   // this program's file, started once for each leg
  QString pictures;  // folder for the pictures
  int dialect = 1;
  int language = 1033;
  int packages = 12;
  QStringList legs;              // those to walk; empty: all
  std::uint32_t block = 262144;  // bytes; the client takes one a second
};

// Plays the parent application and the service: makes an area, starts the client's windows for one
// leg after the other, each in a process of its own, and compares what arrived with what was sent.
class Conductor {
 public:
  explicit Conductor(WalkOptions options);

  // 0 if everything held.
  int Run();

 private:
  struct LegPlan {
    QString name;
    QString desk;  // legs of one desk share the client's data folder
    enum class Service { Full, Empty, WithLogin } service = Service::Full;
    QString scale;  // QT_SCALE_FACTOR, if any
  };

  void MakeAreas();
  bool RunLeg(const LegPlan& plan);
  QString FolderOf(const LegPlan& plan, const QString& kind) const;
  peer::Options ServiceFor(const LegPlan& plan) const;
  bool Accompany(QProcess& client, peer::StandIn& service);
  bool Obey(const QString& request, peer::StandIn& service, QProcess& client);
  bool Compare(const QString& remote, const QString& local);

  WalkOptions options_;
  QTemporaryDir place_;
  bool killed_ = false;
};

}  // namespace updown::demo
