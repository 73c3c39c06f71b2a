#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace updown {

// Rules of names and paths, on the service and on this machine. Both are UTF-8 in the engine and
// wide (UTF-16) in the windows. Either form of a path passes through buffers of kPathCapacity; what
// does not fit is cut at a character, so whoever acts on a path asks FitsPath first. Any thread.

inline constexpr std::size_t kPathCapacity = 260;  // bytes or characters, terminator included

// True if the path's UTF-8 form fits the buffers.
bool FitsPath(std::string_view path);
bool FitsPath(std::u16string_view path);

// True if a name that the service sent can stand as one component of a local path: not empty, not
// "." or "..", no separator and no NUL in it, and not longer than the file system takes.
bool IsSafeName(std::string_view name);

// What stands behind the last separator of either kind; empty if nothing usable as a local file
// name does ("", ".", "..").
std::u16string_view LastComponent(std::u16string_view name);

// Bytes that are no UTF-8, and a NUL, become U+FFFD: such a name is shown, and names nothing.
std::u16string Utf8ToWideName(std::string_view name);
std::string WideToUtf8Name(std::u16string_view name);

}  // namespace updown
