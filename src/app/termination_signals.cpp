#include "app/termination_signals.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <ctime>

namespace updown {
namespace {

constexpr std::array kSignals = {SIGINT, SIGTERM};
constexpr std::time_t kPatienceSeconds = 2;

// All that the handler may use; lock-free, as a handler needs it.
std::atomic<int> wakeFd{-1};
std::atomic<std::time_t> firstSignal{0};

extern "C" void OnTerminationSignal(int number) {
  const int savedErrno = errno;
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  std::time_t first = 0;
  if (!firstSignal.compare_exchange_strong(first, now.tv_sec) &&
      now.tv_sec - first >= kPatienceSeconds) {
    _exit(128 + number);
  }
  const char byte = 0;
  // A full pipe wakes the reader as well as one more byte would.
  [[maybe_unused]] const ssize_t written = write(wakeFd.load(), &byte, 1);
  errno = savedErrno;
}

void Handle(void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  for (const int number : kSignals) {
    sigaction(number, &action, nullptr);
  }
}

}  // namespace

TerminationSignals::TerminationSignals(QObject* parent) : QObject(parent) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
    return;
  }
  readEnd_.Reset(ends[0]);
  writeEnd_.Reset(ends[1]);
  notifier_ = std::make_unique<QSocketNotifier>(readEnd_.Get(), QSocketNotifier::Read);
  connect(notifier_.get(), &QSocketNotifier::activated, this, [this] {
    notifier_->setEnabled(false);
    Q_EMIT Requested();
  });
  firstSignal = 0;
  wakeFd = writeEnd_.Get();
  Handle(&OnTerminationSignal);
}

TerminationSignals::~TerminationSignals() {
  if (notifier_) {
    Handle(SIG_DFL);
    wakeFd = -1;
  }
}

void IgnoreBrokenPipes() { std::signal(SIGPIPE, SIG_IGN); }

}  // namespace updown
