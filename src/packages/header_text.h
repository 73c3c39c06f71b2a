#pragma once

#include <string>

#include "engine/package.h"

namespace updown {

// The four lines above the notes, in the language in force, with CR LF between them. Labels are
// filled up so that the values stand below each other: with the blanks that the language
// has for it, double ones where characters are wider. Of each value the part that a line can
// show.
std::u16string HeaderText(const PackageHeader& header);

// The text with line breaks put into lines of many thousand characters, which an edit control takes
// minutes to lay out.
std::u16string BreakLongLines(const std::u16string& text);

}  // namespace updown
