#pragma once

#include <string>
#include <string_view>

namespace updown {

// Names and paths of the service on their way between windows (wide) and engine (UTF-8). Either
// form passes through buffers of kPathCapacity, terminator included; what does not fit is cut at a
// character, so whoever acts on a path asks FitsPath first.

// Bytes that are no UTF-8, and a NUL, become U+FFFD: such a name is shown, and names nothing.
std::u16string Utf8ToWideName(std::string_view name);
std::string WideToUtf8Name(std::u16string_view name);

// True if the path's UTF-8 form fits the buffers.
bool FitsPath(std::u16string_view path);

// What stands behind the last separator of either kind; empty if nothing usable as a local file
// name does ("", ".", "..").
std::u16string_view LastComponent(std::u16string_view name);

}  // namespace updown
