#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/main_window.h"
#include "app/termination_signals.h"
#include "engine/launch_state.h"
#include "platform/instance_event.h"
#include "service/operations.h"

namespace updown {

// One launch of the program, from its parameters to its end. Needs a QApplication; main thread.
class Application {
 public:
  explicit Application(std::vector<std::string> arguments);  // the process's, UTF-8
  ~Application();

  // Start-up. False if the process is to end at once, with ExitCode(): another instance of this
  // identity runs and has been brought forward, or the command line is refused and the user has
  // been told.
  bool Start();
  int ExitCode() const { return exitCode_; }

  // Runs until the window is closed.
  void Exec();

  // The window's end. False if threads of the engine still use what this object holds: then the
  // process must end without destroying it.
  bool ShutDown();

  // Null before Start and after ShutDown.
  MainWindow* Window() const { return window_.get(); }

 private:
  bool BecomeInstance();
  bool CheckCommandLine();
  void TellLaunchFaults();

  std::vector<std::string> arguments_;
  LaunchState launch_;
  FileService service_;
  std::unique_ptr<InstanceEvent> instanceEvent_;
  std::unique_ptr<MainWindow> window_;
  std::unique_ptr<TerminationSignals> signals_;
  bool closed_ = false;
  int exitCode_ = 0;
};

// The whole program but for its main: gives the exit code, or ends the process itself when a thread
// cannot be waited for. `prepare` is called with the window on screen, before the message loop.
using Preparation = std::function<void(Application&)>;
int RunUpDown(int argc, char** argv, const Preparation& prepare = {});

}  // namespace updown
