#include "engine/result_texts.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <optional>
#include <system_error>

#include "localdata/file_names.h"
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
    ResultText{result::kNoSuchRemoteFile, std::nullopt, StringId::RemoteFileMissing},
    ResultText{result::kBadCharacters, std::nullopt, StringId::BadCharacters},
    ResultText{result::kLanguageSettings, std::nullopt, StringId::IncompatibleLanguage},
    ResultText{result::kInterrupted, StringId::LostConnection, StringId::SessionInterrupted},
    ResultText{result::kNotImplemented, std::nullopt, StringId::NotImplemented},
};

// What the system's reason says more of a code in a row.
struct ReasonText {
  int code;
  int systemError;
  StringId row;
};

constexpr std::array kReasonTexts = {
    ReasonText{result::kConnection, ECONNRESET, StringId::ConnectionDropped},
    ReasonText{result::kConnection, EPIPE, StringId::ConnectionDropped},
    ReasonText{result::kConnection, ETIMEDOUT, StringId::ServiceSilent},
    ReasonText{result::kNotEncodable, ENOMEM, StringId::ShortOfMemory},
    ReasonText{result::kFileOpen, ENOENT, StringId::FolderMissing},
    ReasonText{result::kFileWrite, ENOSPC, StringId::DiskFull},
    ReasonText{result::kFileWrite, EDQUOT, StringId::DiskFull},
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

std::u16string_view ResultRowText(std::int64_t code, int systemError) {
  const auto* const reason =
      std::find_if(kReasonTexts.begin(), kReasonTexts.end(), [&](const ReasonText& text) {
        return result::WithoutSign(text.code) == NumberOf(code) && text.systemError == systemError;
      });
  if (reason != kReasonTexts.end()) {
    return LoadText(reason->row);
  }
  const std::u16string_view known = Find(NumberOf(code), &ResultText::row);
  return known.empty() ? LoadText(StringId::UnknownError) : known;
}

std::u16string ResultDetails(const TransferResult& result) {
  std::u16string text(ResultRowText(result.code, result.systemError));
  text += u" [" + Utf8ToWide(std::to_string(NumberOf(result.code))) + u']';
  if (result.systemError != 0) {
    text += u'\n' + Utf8ToWide(std::generic_category().message(result.systemError));
  }
  if (!result.path.empty()) {
    text += u'\n' + Utf8ToWideName(result.path);
  }
  return text;
}

}  // namespace updown
