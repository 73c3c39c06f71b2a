#pragma once

#include <cstdint>
#include <string>

#include "engine/package.h"

namespace updown {

// The four lines above the notes, in the language in force, with CR LF between them. Labels are
// filled up so that the values stand below each other: with blanks in English (1033), with double
// ones for the wider characters of the other languages. Of each value the part that a line can
// show.
std::u16string HeaderText(const PackageHeader& header, std::int32_t languageId);

// The text with line breaks put into lines of many thousand characters, which an edit control takes
// minutes to lay out.
std::u16string BreakLongLines(const std::u16string& text);

}  // namespace updown
