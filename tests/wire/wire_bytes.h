#pragma once

#include <string>
#include <string_view>

namespace updown::testing {

// Bytes written out by hand: hexadecimal digits with blanks anywhere, and text between quotes.
// "010004 00001004 020002 '/a' FF"
inline std::string Wire(std::string_view notation) {
  std::string bytes;
  std::string digits;
  bool quoted = false;
  for (const char letter : notation) {
    if (letter == '\'') {
      quoted = !quoted;
    } else if (quoted) {
      bytes += letter;
    } else if (letter != ' ') {
      digits += letter;
    }
    if (digits.size() == 2) {
      bytes += static_cast<char>(std::stoi(digits, nullptr, 16));
      digits.clear();
    }
  }
  return bytes;
}

// Big-endian, four bytes.
inline std::string Number(std::size_t number) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) {
    bytes += static_cast<char>(number >> shift & 0xFF);
  }
  return bytes;
}

inline std::string Attribute(int tag, std::string_view value) {
  return static_cast<char>(tag) + Number(value.size()).substr(2) + std::string(value);
}

inline std::string Framed(const std::string& list) { return Number(list.size()) + list; }

}  // namespace updown::testing
