#pragma once

#include <QWidget>
#include <string>

namespace updown {

enum class MoveEnd {
  Moved,
  Left,       // where it was: it failed, or the user does not want to replace a file
  Cancelled,  // by the user, or by the end of the program
};

// Moves a local file or folder to another path (both UTF-8) off the main thread. Asks before it
// replaces a file, shows a box with Cancel when it takes long, and tells a failure, all in front of
// `owner`. A cancelled copy is taken away again, at the end of the program for as long as an exit
// can wait. Both in and after the call `owner` may be gone.
MoveEnd MoveInBox(QWidget* owner, const std::string& path, const std::string& target);

}  // namespace updown
