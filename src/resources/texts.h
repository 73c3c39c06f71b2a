#pragma once

#include <cstdint>
#include <string_view>

#include "resources/languages.h"
#include "resources/string_id.h"

namespace updown {

// The texts of texts.inc in the language in force. Any thread, once the language is chosen.

// Chooses the language once, before any window or thread exists. Any identifier may come.
void SetStringLanguage(std::int32_t languageId);
const Language& CurrentLanguage();

// Never empty for a name of the table.
std::u16string_view LoadText(StringId id);

// A string by a number that came as a result code; empty if none has it. Menu items and captions
// are not found so.
std::u16string_view LoadText(std::uint32_t number);

}  // namespace updown
