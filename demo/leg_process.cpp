#include "demo/leg_process.h"

#include <QApplication>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "app/application.h"
#include "demo/legs.h"

namespace updown::demo {

namespace {

QString Value(const std::vector<std::string>& arguments, std::string_view name) {
  for (std::size_t i = 0; i + 1 < arguments.size(); ++i) {
    if (arguments[i] == name) {
      return QString::fromStdString(arguments[i + 1]);
    }
  }
  return {};
}

// One line to the conductor, one line back.
void Ask(const QStringList& words) {
  std::printf("@%s\n", qUtf8Printable(words.join(u'\t')));
  std::fflush(stdout);
  std::string answer;
  if (!std::getline(std::cin, answer)) {
    throw WalkFailure("the conductor is gone");
  }
}

void Close(Application& app) {
  app.Window()->close();
  app.Exec();
  if (!app.ShutDown()) {
    throw WalkFailure("the engine did not end in time");
  }
}

}  // namespace

bool IsLegProcess(int argc, char** argv) { return !Value({argv, argv + argc}, "--leg").isEmpty(); }

int RunLegProcess(int argc, char** argv) {
  const std::vector<std::string> arguments(argv, argv + argc);
  int ownName = 1;
  const QApplication application(ownName, argv);
  // Blinking cursors and the like would make the pictures differ from run to run.
  QApplication::setCursorFlashTime(0);
  Application app(arguments);
  Walker walker(Value(arguments, "--pictures"), Value(arguments, "--prefix"));
  LegContext context{walker, Value(arguments, "--received"),
                     [&] {
                       if (!app.Start()) {
                         throw WalkFailure("the client did not start");
                       }
                     },
                     [&] { Close(app); }, Ask};
  int code = EXIT_SUCCESS;
  try {
    Legs().at(Value(arguments, "--leg"))(context);
  } catch (const std::exception& failure) {
    std::printf("  NO  %s\n", failure.what());
    code = EXIT_FAILURE;
  }
  // Whatever the leg left behind must not keep the process: it may have failed anywhere.
  std::fflush(nullptr);
  std::_Exit(code);
}

}  // namespace updown::demo
