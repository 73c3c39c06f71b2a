#pragma once

#include <cctype>
#include <string>
#include <string_view>

namespace updown::testing {

// Bytes written out by hand: hexadecimal digits with blanks anywhere, and text between quotes.
// "010004 00001004 020002 '/a' FF"
inline std::string Wire(std::string_view notation) {
  std::string bytes;
  int high = -1;
  bool quoted = false;
  for (const char letter : notation) {
    if (letter == '\'') {
      quoted = !quoted;
    } else if (quoted) {
      bytes += letter;
    } else if (std::isxdigit(static_cast<unsigned char>(letter)) != 0) {
      const int digit = letter <= '9' ? letter - '0' : (letter & 0xF) + 9;
      if (high < 0) {
        high = digit;
      } else {
        bytes += static_cast<char>(high * 16 + digit);
        high = -1;
      }
    }
  }
  return bytes;
}

// Big-endian number of four bytes.
inline std::string Number(std::size_t number) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) {
    bytes += static_cast<char>(number >> shift & 0xFF);
  }
  return bytes;
}

}  // namespace updown::testing
