#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "peer/arguments.h"
#include "peer/connection.h"
#include "peer/control.h"
#include "peer/make_area.h"

namespace {

using updown::peer::Arguments;
using updown::peer::Control;
using updown::peer::Handle;
using updown::peer::StandIn;

constexpr int kBadUsage = 2;
constexpr int kServicePort = 8100;  // any will do: the relay knows one service

// Blocked before the first thread starts, so that every thread leaves them to this descriptor.
Handle TakeEndingSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  Handle descriptor(signalfd(-1, &signals, SFD_CLOEXEC));
  if (!descriptor.IsOpen()) throw std::runtime_error("no descriptor for signals");
  return descriptor;
}

void PrintLaunch(const StandIn& standIn, const Arguments& arguments) {
  const std::string client =
      "updown -s " + arguments.service.serviceName + " -p " + std::to_string(kServicePort);
  const char* const quote = arguments.printCommand ? "'" : "";
  const char* const end = arguments.printCommand ? " " : "\n";
  if (arguments.printCommand) std::printf("env ");
  for (const auto& [name, value] : standIn.Environment(arguments.area.languageId)) {
    std::printf("%s%s=%s%s%s", quote, name.c_str(), value.c_str(), quote, end);
  }
  std::printf("%s\nready\n", client.c_str());
  std::fflush(stdout);
}

// Adds what has come to `input`. False at its end.
bool ReadStandardInput(std::string& input) {
  std::array<char, 4096> piece{};
  const ssize_t count = read(STDIN_FILENO, piece.data(), piece.size());
  if (count > 0) input.append(piece.data(), static_cast<std::size_t>(count));
  return count > 0 || (count < 0 && (errno == EINTR || errno == EAGAIN));
}

void ObeyLines(Control& control, std::string& input) {
  for (std::size_t end; (end = input.find('\n')) != std::string::npos; input.erase(0, end + 1)) {
    const std::string line = input.substr(0, end);
    std::printf("%s\n",
                line == "help" ? updown::peer::kControlHelpText : control.Obey(line).c_str());
    std::fflush(stdout);
  }
}

void WaitForEnd(const Handle& signals, Control& control, const Arguments& arguments) {
  const bool reads = arguments.untilEof || arguments.control;
  std::array<pollfd, 2> waits{pollfd{signals.Get(), POLLIN, 0},
                              pollfd{reads ? STDIN_FILENO : -1, POLLIN, 0}};
  std::string input;
  for (;;) {
    if (poll(waits.data(), waits.size(), control.Patience()) < 0 && errno != EINTR) return;
    control.ReturnIfDue();
    if (waits[0].revents != 0) return;
    if (waits[1].revents != 0 && !ReadStandardInput(input)) return;
    if (arguments.control) {
      ObeyLines(control, input);
    } else {
      input.clear();
    }
  }
}

int Run(const Arguments& arguments) {
  if (arguments.help) {
    std::printf("%s", updown::peer::kHelpText);
    return 0;
  }
  if (arguments.makeArea) updown::peer::MakeArea(arguments.area);
  if (arguments.service.root.empty()) return 0;
  const Handle signals = TakeEndingSignals();
  Control control(arguments.service);
  PrintLaunch(control.Service(), arguments);
  WaitForEnd(signals, control, arguments);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const std::vector<std::string> words(argv + (argc > 0 ? 1 : 0), argv + argc);
    return Run(updown::peer::ParseArguments(words));
  } catch (const std::invalid_argument& problem) {
    std::fprintf(stderr, "updown-peer: %s (see --help)\n", problem.what());
    return kBadUsage;
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "updown-peer: %s\n", problem.what());
    return 1;
  }
}
