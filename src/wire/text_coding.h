#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "wire/attributes.h"

namespace updown {

// Two lower-case hexadecimal digits for each byte, high nibble first.
std::string HexEncode(Bytes source);

// The launch parameters' letter coding: each byte is a pair of letters 'A' (0) to 'P' (15), high
// nibble first.
struct LetterDecoded {
  int result = -1;    // bytes produced, or -1 if refused or cut short by a foreign letter
  std::string bytes;  // what was decoded, up to the fault
};
// Refused, with no bytes, if the length is odd or more than 2 times `capacity`.
LetterDecoded LetterDecode(std::string_view source, std::size_t capacity);

}  // namespace updown
