#pragma once

#include <QObject>
#include <QSocketNotifier>

namespace updown {

// The process's answer to signals, from here to its end. First of all in main.
//
// SIGHUP, SIGINT and SIGTERM end the program: as long as there is no TerminationSignals at once and
// with status 0, for nothing is under way then that could be lost, later through it. A SIGHUP that
// the parent has ignored stays so. SIGPIPE and SIGXFSZ are ignored: a peer that goes away, and a
// file that may not grow, show as the errors of send and write.
void InstallSignalHandlers();

// Turns the ending signals into a Qt signal on the main thread, from its making to its end; one
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
  QSocketNotifier notifier_;
};

}  // namespace updown
