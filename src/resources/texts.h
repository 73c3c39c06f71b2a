#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "resources/string_id.h"

namespace updown {

// The texts of the three languages, compiled in from texts.inc.

// Chooses the language once, before any window exists: 1033, 2052 or 1028; any other number gets
// the English texts.
void SetStringLanguage(std::int32_t languageId);

// The string in the language in force; empty if there is none of that number. Any number may be
// asked for, since unmapped result codes are looked up as they stand. Menu items and captions have
// numbers of their own kind and are not found so.
std::u16string_view LoadText(std::uint32_t id);

// Any text of the table by its name.
std::u16string_view LoadText(StringId id);

// The text, or `fallback` if it is empty.
std::u16string_view LoadText(StringId id, std::u16string_view fallback);

}  // namespace updown
