#include "wire/text_coding.h"

namespace updown {

std::string HexEncode(Bytes source) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  text.reserve(source.size() * 2);
  for (const std::uint8_t byte : source) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xF];
  }
  return text;
}

LetterDecoded LetterDecode(std::string_view source, std::size_t capacity) {
  LetterDecoded decoded;
  if (source.size() % 2 != 0 || capacity < source.size() / 2) {
    return decoded;
  }
  const auto isLetter = [](char letter) { return letter >= 'A' && letter <= 'P'; };
  for (std::size_t at = 0; at < source.size(); at += 2) {
    const char high = source[at];
    const char low = source[at + 1];
    if (!isLetter(high) || !isLetter(low)) {
      return decoded;
    }
    decoded.bytes += static_cast<char>((high - 'A') * 16 + (low - 'A'));
  }
  decoded.result = static_cast<int>(decoded.bytes.size());
  return decoded;
}

}  // namespace updown
