#include "app/desktop_notifications.h"

#include <utility>

#include "resources/qt/texts.h"

namespace updown {
namespace {

QString Counted(StringId text, int count) { return Text(text).arg(count); }

}  // namespace

DesktopNotifications::DesktopNotifications(std::chrono::milliseconds collect) {
  collect_.setSingleShot(true);
  collect_.setInterval(collect);
  connect(&collect_, &QTimer::timeout, this, &DesktopNotifications::Tell);
}

DesktopNotifications::~DesktopNotifications() {
  BeginEnd();
  WaitForEnd(std::chrono::milliseconds(0));
}

void DesktopNotifications::TransferEnded(const QString& file, const QString& failure) {
  if (!active_) {
    ++(failure.isEmpty() ? finished_ : failed_);
    file_ = (file.simplified() + u'\n' + failure.simplified()).trimmed();
    Collect(NotificationKind::Transfers);
  }
}

void DesktopNotifications::PackageCame(const QString& name) {
  if (!active_) {
    ++packages_;
    package_ = name.simplified();
    Collect(NotificationKind::Packages);
  }
}

void DesktopNotifications::Collect(NotificationKind kind) {
  if (!untold_.contains(kind)) {
    untold_.append(kind);
  }
  if (!collect_.isActive()) {
    collect_.start();
  }
}

void DesktopNotifications::Tell() {
  if (telling_ || untold_.isEmpty()) {
    return;
  }
  if (thread_ == nullptr) {
    thread_ = new QThread;
    auto* const bus = new NotificationBus;
    bus->moveToThread(thread_);
    connect(thread_, &QThread::finished, bus, &QObject::deleteLater);
    connect(this, &DesktopNotifications::Wanted, bus, &NotificationBus::Show);
    connect(this, &DesktopNotifications::Withdrawn, bus, &NotificationBus::Withdraw);
    connect(bus, &NotificationBus::Clicked, this, &DesktopNotifications::Clicked);
    connect(bus, &NotificationBus::Shown, this, [this] {
      telling_ = false;
      if (!untold_.isEmpty()) {
        collect_.start();
      }
    });
    thread_->start();
  }
  telling_ = true;
  const NotificationKind kind = untold_.takeFirst();
  Q_EMIT Wanted(kind == NotificationKind::Transfers ? OfTransfers() : OfPackages());
}

Notification DesktopNotifications::OfTransfers() const {
  if (finished_ + failed_ == 1) {
    return {NotificationKind::Transfers,
            Text(failed_ == 0 ? StringId::NotificationFinished : StringId::NotificationFailed),
            file_, failed_ != 0};
  }
  QStringList lines;
  if (finished_ != 0) {
    lines.append(Counted(StringId::NotificationSavedCount, finished_));
  }
  if (failed_ != 0) {
    lines.append(Counted(StringId::NotificationFailedCount, failed_));
  }
  return {NotificationKind::Transfers, Text(StringId::NotificationTransfers), lines.join(u'\n'),
          failed_ != 0};
}

Notification DesktopNotifications::OfPackages() const {
  return packages_ == 1
             ? Notification{NotificationKind::Packages, Text(StringId::NotificationPackage),
                            package_}
             : Notification{NotificationKind::Packages, Text(StringId::NotificationPackages),
                            Counted(StringId::NotificationPackageCount, packages_)};
}

void DesktopNotifications::SetActive(bool active) {
  active_ = active;
  if (active_) {
    finished_ = failed_ = packages_ = 0;
    untold_.clear();
    collect_.stop();
    Q_EMIT Withdrawn();
  }
}

void DesktopNotifications::BeginEnd() {
  active_ = true;  // nothing more is told
  untold_.clear();
  collect_.stop();
  if (thread_ != nullptr) {
    thread_->quit();
  }
}

bool DesktopNotifications::WaitForEnd(std::chrono::milliseconds limit) {
  QThread* const thread = std::exchange(thread_, nullptr);
  if (thread != nullptr && !thread->wait(QDeadlineTimer(limit))) {
    static auto& leftToTheProcess = *new QList<QThread*>;  // still in use at its end, perhaps
    leftToTheProcess.append(thread);
    return false;
  }
  delete thread;
  return true;
}

}  // namespace updown
