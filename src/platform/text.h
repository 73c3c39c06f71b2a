#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace updown {

// Wide text is UTF-16 throughout (std::u16string): what the windows show and what messages carry.
// Names on the service and local paths are UTF-8. Package headers and the command line's service
// name are in the ANSI code page.
//
// All conversions are lenient: what cannot be converted becomes one replacement character (U+FFFD,
// or '?' towards a code page) and nothing around it is lost. Any thread.

std::u16string Utf8ToWide(std::string_view utf8);
std::string WideToUtf8(std::u16string_view wide);
// The same in at most `most` bytes, cut at a character.
std::string WideToUtf8(std::u16string_view wide, std::size_t most);

// Windows code pages, by number.
enum class AnsiCodePage { Western = 1252, SimplifiedChinese = 936, TraditionalChinese = 950 };

std::u16string AnsiToWide(std::string_view bytes, AnsiCodePage codePage);
std::string WideToAnsi(std::u16string_view wide, AnsiCodePage codePage);

// For names that are compared as bytes: only the ASCII letters have a case.
constexpr char AsciiLower(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

// Comparisons without regard to case, by simple case folding of each character.
int CompareIgnoringCase(std::u16string_view a, std::u16string_view b);
bool EqualIgnoringCase(std::u16string_view a, std::u16string_view b);
std::u16string ToUpper(std::u16string_view wide);

}  // namespace updown
