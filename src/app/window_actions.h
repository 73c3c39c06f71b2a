#pragma once

#include <QAction>
#include <QWidget>

namespace updown {

// The commands of the main window, each made once: they work wherever the keyboard is in that
// window and stand in the menu of each pane. Made in `window`, which owns them; what they do is
// connected by the owner. Object names: those of the members, with "Action" behind.
struct WindowActions {
  explicit WindowActions(QWidget& window);

  // Puts them behind the pane's own commands, with a line between.
  void AddTo(QWidget& pane) const;

  QAction* const refresh;     // F5
  QAction* const find;        // Ctrl+F
  QAction* const folderTree;  // F6
  QAction* const transfers;   // Ctrl+J, in the program's other windows too
  QAction* const help;        // F1, in the program's other windows too
  QAction* const cancel;      // Escape: what is being asked of the service; in no menu
};

}  // namespace updown
