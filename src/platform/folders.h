#pragma once

#include <optional>
#include <string>

namespace updown {

// Paths are UTF-8 with "/" and without a trailing one.

// The user's application data folder: $XDG_DATA_HOME if that is an absolute path, else
// ~/.local/share (home from $HOME, else from the user database). Made if missing. Nothing when it
// can neither be formed nor made.
std::optional<std::string> ApplicationDataFolder();

// The same for what the program remembers of its windows: $XDG_STATE_HOME, else ~/.local/state.
std::optional<std::string> StateFolder();

// Folder of the running program's file.
std::string ExecutableFolder();

// Makes one folder (not its parents); true if it is there afterwards.
bool MakeFolder(const std::string& path);

// True if `path` names something that exists, whatever it is.
bool PathExists(const std::string& path);

}  // namespace updown
