#pragma once

#include <QWidget>
#include <optional>
#include <string>

namespace updown {

// MoveLocal off the main thread, for files that are copied to a slow disk: the windows go on, and a
// box in front of `owner` says what is going on when it takes long. The user has no way to break it
// off, but the end of the program does: the copy is then taken away again, for as long as an exit
// can wait. Nothing is returned too when `owner` went meanwhile; the move then goes on by itself.
std::optional<std::string> MoveWithProgress(QWidget* owner, const QString& title,
                                            const std::string& path, const std::string& folder);

}  // namespace updown
