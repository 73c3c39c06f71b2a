#include "app/report_result.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "platform/text.h"
#include "resources/string_id.h"
#include "resources/texts.h"
#include "service/result_codes.h"

namespace updown {
namespace {

struct ReportRow {
  int code;
  StringId text;
};

constexpr std::array kReportRows = {
    ReportRow{result::kConnection, StringId::NetworkError},
    ReportRow{result::kNotEncodable, StringId::ShortOfResources},
    ReportRow{result::kAuthentication, StringId::AuthenticationFailed},
    ReportRow{result::kAccessRefused, StringId::AccessDenied},
    ReportRow{result::kBusy, StringId::SystemBusy},
    ReportRow{result::kFileOpen, StringId::OpenFailed},
    ReportRow{result::kFileWrite, StringId::WriteFailed},
    ReportRow{result::kInterrupted, StringId::LostConnection},
};

std::uint32_t WithoutSign(std::int64_t code) {
  return static_cast<std::uint32_t>(code < 0 ? -code : code);
}

}  // namespace

std::uint32_t ReportStringId(std::int64_t code) {
  const std::uint32_t number = WithoutSign(code);
  const auto* row = std::find_if(kReportRows.begin(), kReportRows.end(),
                                 [&](const ReportRow& r) { return WithoutSign(r.code) == number; });
  return row == kReportRows.end() ? number : static_cast<std::uint32_t>(row->text);
}

std::u16string ReportText(std::int64_t code) {
  constexpr std::size_t kReportCharacters = 519;
  const std::u16string_view known = LoadText(ReportStringId(code));
  std::u16string text(known.empty() ? std::u16string_view(u"Unknown error") : known);
  text += u'[' + Utf8ToWide(std::to_string(WithoutSign(code))) + u']';
  return text.substr(0, kReportCharacters);
}

}  // namespace updown
