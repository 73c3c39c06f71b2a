#include "app/termination_signals.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>

namespace updown {
namespace {

constexpr std::array kEndingSignals = {SIGHUP, SIGINT, SIGTERM};
constexpr std::time_t kPatienceSeconds = 2;

// All that the handler may use; lock-free, as a handler needs it.
std::atomic<bool> someoneListens{false};
std::atomic<int> wakeFd{-1};
std::atomic<std::time_t> firstSignal{0};

extern "C" void OnEndingSignal(int number) {
  const int savedErrno = errno;
  if (!someoneListens) {
    _exit(EXIT_SUCCESS);
  }
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  std::time_t first = 0;
  if (!firstSignal.compare_exchange_strong(first, now.tv_sec) &&
      now.tv_sec - first >= kPatienceSeconds) {
    _exit(128 + number);
  }
  const char byte = 0;
  // A full pipe wakes the reader as well as one more byte would.
  [[maybe_unused]] const ssize_t written = write(wakeFd, &byte, 1);
  errno = savedErrno;
}

void Handle(int number, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  sigaction(number, &action, nullptr);
}

bool IsIgnored(int number) {
  struct sigaction action {};
  return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

// The end to read from; the handler writes to the other. Both stay open as long as the process.
int WakePipe() {
  static const int readEnd = [] {
    std::array<int, 2> ends{-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) == 0) {
      wakeFd = ends[1];
    }
    return ends[0];
  }();
  return readEnd;
}

}  // namespace

void InstallSignalHandlers() {
  Handle(SIGPIPE, SIG_IGN);
  Handle(SIGXFSZ, SIG_IGN);
  for (const int number : kEndingSignals) {
    if (number != SIGHUP || !IsIgnored(number)) {
      Handle(number, &OnEndingSignal);
    }
  }
}

TerminationSignals::TerminationSignals(QObject* parent)
    : QObject(parent), notifier_(WakePipe(), QSocketNotifier::Read) {
  connect(&notifier_, &QSocketNotifier::activated, this, [this] {
    notifier_.setEnabled(false);
    Q_EMIT Requested();
  });
  firstSignal = 0;
  someoneListens = true;
}

TerminationSignals::~TerminationSignals() { someoneListens = false; }

}  // namespace updown
