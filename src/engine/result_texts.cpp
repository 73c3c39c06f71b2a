#include "engine/result_texts.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>

#include "platform/text.h"
#include "resources/texts.h"
#include "service/result_codes.h"

namespace updown {
namespace {

struct ResultText {
  int code;
  std::optional<StringId> box;  // nothing: an unknown error there
  StringId row;
};

constexpr std::array kResultTexts = {
    ResultText{result::kConnection, StringId::NetworkError, StringId::NetworkError},
    ResultText{result::kNotEncodable, StringId::ShortOfResources, StringId::ShortOfResources},
    ResultText{result::kAuthentication, StringId::AuthenticationFailed,
               StringId::AuthenticationFailed},
    ResultText{result::kAccessRefused, StringId::AccessDenied, StringId::AccessDenied},
    ResultText{result::kBusy, StringId::SystemBusy, StringId::SystemBusy},
    ResultText{result::kFileOpen, StringId::OpenFailed, StringId::OpenFailed},
    ResultText{result::kFileWrite, StringId::WriteFailed, StringId::WriteFailed},
    ResultText{result::kService8210, std::nullopt, StringId::Blank},
    ResultText{result::kNoSuchRemoteFile, std::nullopt, StringId::OpenFailed},
    ResultText{result::kBadCharacters, std::nullopt, StringId::BadCharacters},
    ResultText{result::kLanguageSettings, std::nullopt, StringId::IncompatibleLanguage},
    ResultText{result::kInterrupted, StringId::LostConnection, StringId::SessionInterrupted},
    ResultText{result::kNotImplemented, std::nullopt, StringId::NotImplemented},
};

std::uint32_t NumberOf(std::int64_t code) {
  return static_cast<std::uint32_t>(code < 0 ? -code : code);
}

// The text of a number in one column of the table, or the one whose id it is; else empty.
template <typename Column>
std::u16string_view Find(std::uint32_t number, Column ResultText::*column) {
  const auto* const found = std::find_if(
      kResultTexts.begin(), kResultTexts.end(),
      [number](const ResultText& text) { return result::WithoutSign(text.code) == number; });
  if (found == kResultTexts.end()) {
    return LoadText(number);
  }
  const std::optional<StringId> text = (*found).*column;
  return text ? LoadText(*text) : std::u16string_view();
}

}  // namespace

std::u16string ResultBoxText(std::int64_t code) {
  constexpr std::size_t kMostCharacters = 519;
  const std::uint32_t number = NumberOf(code);
  const std::u16string_view known = Find(number, &ResultText::box);
  std::u16string text(known.empty() ? std::u16string_view(u"Unknown error") : known);
  text += u'[' + Utf8ToWide(std::to_string(number)) + u']';
  return text.substr(0, kMostCharacters);
}

std::u16string_view ResultRowText(std::int64_t code) {
  const std::u16string_view known = Find(NumberOf(code), &ResultText::row);
  return known.empty() ? LoadText(StringId::UnknownError) : known;
}

}  // namespace updown
