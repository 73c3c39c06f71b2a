#pragma once

#include <QString>
#include <QWidget>
#include <functional>

namespace updown {

// What the status window asks of the desktop; main thread, paths are local. None of the first two
// waits for the program that it starts, and none tells a failure: the user sees whether something
// opens.
struct Desktop {
  // Opens a file with the program that the desktop has for its kind.
  std::function<void(const QString& path)> openFile;

  // Shows a file selected in its folder, or else the folder.
  std::function<void(const QString& path)> showInFolder;

  // Asks the user for a folder; empty if the user gives up.
  std::function<QString(QWidget* owner, const QString& title)> askFolder;
};

// The one of this session. Programs that it starts do not get the launch variables.
Desktop SystemDesktop();

}  // namespace updown
