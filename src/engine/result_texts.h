#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "service/transfer_result.h"

namespace updown {

// Where a failure becomes a text: one table from result codes to texts, in the language in force.
// Codes come with either sign. A number that is no code of the table is looked up as a text's id,
// since some failures are told by the id of their text.

// For the box of a folder operation: "text[code]", the code without its sign. The text of an
// unknown one is "Unknown error".
std::u16string ResultBoxText(std::int64_t code);

// For the row of a transfer, which says more than a box: why its one transfer ended. `systemError`
// is an errno, or 0.
std::u16string_view ResultRowText(std::int64_t code, int systemError = 0);

// All there is to say, in lines: the row's text and the code, the system's words, the path.
std::u16string ResultDetails(const TransferResult& result);

}  // namespace updown
