#pragma once

#include <atomic>
#include <optional>
#include <string>

namespace updown {

// Rename goes by renaming where it can, and by copying towards another file system. Copy always
// copies.
enum class MoveRoad { Rename, Copy };

// Moves a file, link or folder into another folder under its own name and returns its new path
// (UTF-8 both). Nothing is asked: a file of that name in the folder is replaced by a moved file. A
// folder of that name is never replaced nor merged into, and a moved folder replaces nothing.
//
// A copy stands complete on the disk under a name of its own before it takes the wanted name, and
// the source goes then. So after a failure (nothing returned) all is as it was: the source in its
// place and the folder without a trace of it. A `stop` that is set while bytes are copied is such a
// failure.
std::optional<std::string> MoveLocal(const std::string& path, const std::string& folder,
                                     MoveRoad road = MoveRoad::Rename,
                                     const std::atomic<bool>* stop = nullptr);

}  // namespace updown
