#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <memory>

#include "platform/unique_fd.h"

namespace updown {

// Turns SIGINT and SIGTERM into a Qt signal on the main thread, from its making to its end; one
// object at a time. A further signal that comes two seconds or more after the first one finds a
// main thread that does not answer, and ends the process at once.
class TerminationSignals : public QObject {
  Q_OBJECT

 public:
  explicit TerminationSignals(QObject* parent = nullptr);
  ~TerminationSignals() override;

 Q_SIGNALS:
  void Requested();

 private:
  UniqueFd readEnd_;
  UniqueFd writeEnd_;
  std::unique_ptr<QSocketNotifier> notifier_;
};

// A peer that goes away must show as a failed send and not end the process.
void IgnoreBrokenPipes();

}  // namespace updown
