#pragma once

#include <cstdint>
#include <string>

namespace updown {

// The string that words a result code of either sign in the box of a folder operation; a number
// without a row of its own is a string id itself. (Rows of the status window have another table.)
std::uint32_t ReportStringId(std::int64_t code);

// "text[code]", the code without its sign. The text of an unknown one is "Unknown error".
std::u16string ReportText(std::int64_t code);

}  // namespace updown
