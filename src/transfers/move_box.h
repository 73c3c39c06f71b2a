#pragma once

#include <QWidget>
#include <optional>
#include <string>

namespace updown {

// Moves a local file or folder (UTF-8 paths) off the main thread, and gives its new path. Asks
// before it replaces a file, shows a box with Cancel when copying takes long, and tells a failure,
// all in front of `owner`. Nothing is returned if the user says no or cancels, and if the program
// ends meanwhile, which stops the copy and takes it away again for as long as an exit can wait.
// Both in and after the call `owner` may be gone.
std::optional<std::string> MoveInBox(QWidget* owner, const std::string& path,
                                     const std::string& folder);

}  // namespace updown
