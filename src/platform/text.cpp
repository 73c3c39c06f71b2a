#include "platform/text.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <limits>
#include <unicode/utf16.h>

namespace updown {
namespace {

constexpr UChar32 kReplacement = 0xFFFD;
constexpr std::size_t kMostUnits = std::numeric_limits<std::int32_t>::max() / 4;

// The converter counts in 32 bits. No text of the program comes near that; a longer one is cut.
std::int32_t Length(std::size_t size) {
  return static_cast<std::int32_t>(std::min(size, kMostUnits));
}

UChar32 NextCharacter(std::u16string_view text, std::int32_t& position) {
  UChar32 character = 0;
  U16_NEXT(text.data(), position, Length(text.size()), character);
  return character;
}

}  // namespace

std::u16string Utf8ToWide(std::string_view utf8) {
  std::u16string wide(utf8.size(), u'\0');  // no byte gives more than one unit
  std::int32_t written = 0;
  UErrorCode error = U_ZERO_ERROR;
  u_strFromUTF8WithSub(wide.data(), Length(wide.size()), &written, utf8.data(), Length(utf8.size()),
                       kReplacement, nullptr, &error);
  wide.resize(U_SUCCESS(error) ? static_cast<std::size_t>(written) : 0);
  return wide;
}

std::string WideToUtf8(std::u16string_view wide) {
  std::string utf8(static_cast<std::size_t>(Length(wide.size())) * 3, '\0');
  std::int32_t written = 0;
  UErrorCode error = U_ZERO_ERROR;
  u_strToUTF8WithSub(utf8.data(), static_cast<std::int32_t>(utf8.size()), &written, wide.data(),
                     Length(wide.size()), kReplacement, nullptr, &error);
  utf8.resize(U_SUCCESS(error) ? static_cast<std::size_t>(written) : 0);
  return utf8;
}

std::string WideToUtf8(std::u16string_view wide, std::size_t most) {
  std::string utf8 = WideToUtf8(wide);
  if (utf8.size() > most) {
    const auto isContinuation = [](char byte) {
      return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
    };
    while (most > 0 && isContinuation(utf8[most])) {
      --most;
    }
    utf8.resize(most);
  }
  return utf8;
}

int CompareIgnoringCase(std::u16string_view a, std::u16string_view b) {
  std::int32_t atA = 0;
  std::int32_t atB = 0;
  while (atA < Length(a.size()) && atB < Length(b.size())) {
    const UChar32 left = u_foldCase(NextCharacter(a, atA), U_FOLD_CASE_DEFAULT);
    const UChar32 right = u_foldCase(NextCharacter(b, atB), U_FOLD_CASE_DEFAULT);
    if (left != right) {
      return left < right ? -1 : 1;
    }
  }
  return static_cast<int>(atA < Length(a.size())) - static_cast<int>(atB < Length(b.size()));
}

bool EqualIgnoringCase(std::u16string_view a, std::u16string_view b) {
  return CompareIgnoringCase(a, b) == 0;
}

std::u16string ToUpper(std::u16string_view wide) {
  std::u16string upper;
  upper.reserve(wide.size());
  for (std::int32_t at = 0; at < Length(wide.size());) {
    const UChar32 character = u_toupper(NextCharacter(wide, at));
    if (character > 0xFFFF) {
      upper.push_back(U16_LEAD(character));
      upper.push_back(U16_TRAIL(character));
    } else {
      upper.push_back(static_cast<char16_t>(character));
    }
  }
  return upper;
}

}  // namespace updown
