#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <system_error>

namespace updown {

// What the commands of the transfer window do on the disk. Paths are UTF-8. Any thread.

// A move under way, seen and stopped from another thread.
struct MoveProgress {
  std::atomic<std::uint64_t> totalBytes = 0;  // 0 until a copy starts: a rename is over at once
  std::atomic<std::uint64_t> copiedBytes = 0;
  std::atomic<bool> stop = false;
};

// Where a file or folder comes to stand in another folder; nothing for a path without a name of its
// own, and for the folder that it is in already.
std::optional<std::string> MoveTarget(const std::string& path, const std::string& folder);

enum class MoveRoad { Rename, Copy };  // Rename copies towards another file system, Copy always

// Moves a file, link or folder. A file under the new name is replaced with `replace` only, and a
// folder never, nor merged into.
//
// A copy stands complete on the disk under a temporary name before it takes the wanted one, and the
// source goes then; what of the source cannot be removed stays. So after an error all is as it was
// and nothing is left of the copy. A stop is errc::operation_canceled. Rights and times go along
// where the file system takes them.
std::error_code MoveLocal(const std::string& from, const std::string& to, bool replace,
                          MoveProgress& progress, MoveRoad road = MoveRoad::Rename);

}  // namespace updown
