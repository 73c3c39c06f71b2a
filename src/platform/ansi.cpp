#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>

#include "platform/text.h"

namespace updown {
namespace {

struct CloseConverter {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, CloseConverter>;

constexpr std::size_t kMostConverted = std::numeric_limits<std::int32_t>::max() / 8;

std::int32_t ConvertedLength(std::size_t size) {
  return static_cast<std::int32_t>(std::min(size, kMostConverted));
}

// The library's own substitution writes U+001A for some bytes, and nothing at all for characters
// without a width of their own. These write one visible character for each fault.
void ReplaceBytes(const void* /*context*/, UConverterToUnicodeArgs* arguments,
                  const char* /*bytes*/, std::int32_t /*length*/, UConverterCallbackReason reason,
                  UErrorCode* error) {
  if (reason <= UCNV_IRREGULAR) {
    const char16_t replacement = 0xFFFD;
    *error = U_ZERO_ERROR;
    ucnv_cbToUWriteUChars(arguments, &replacement, 1, 0, error);
  }
}

void ReplaceCharacter(const void* /*context*/, UConverterFromUnicodeArgs* arguments,
                      const char16_t* /*units*/, std::int32_t /*length*/, UChar32 /*character*/,
                      UConverterCallbackReason reason, UErrorCode* error) {
  if (reason <= UCNV_IRREGULAR) {
    *error = U_ZERO_ERROR;
    ucnv_cbFromUWriteBytes(arguments, "?", 1, 0, error);
  }
}

Converter OpenConverter(const char* name) {
  UErrorCode error = U_ZERO_ERROR;
  Converter converter(ucnv_open(name, &error));
  ucnv_setToUCallBack(converter.get(), ReplaceBytes, nullptr, nullptr, nullptr, &error);
  ucnv_setFromUCallBack(converter.get(), ReplaceCharacter, nullptr, nullptr, nullptr, &error);
  return U_SUCCESS(error) ? std::move(converter) : nullptr;
}

// A converter holds state between its calls, so each thread has its own.
UConverter* ConverterFor(AnsiCodePage codePage) {
  thread_local const Converter western = OpenConverter("ibm-5348_P100-1997");
  thread_local const Converter simplified = OpenConverter("windows-936-2000");
  thread_local const Converter traditional = OpenConverter("windows-950-2000");
  switch (codePage) {
    case AnsiCodePage::SimplifiedChinese:
      return simplified.get();
    case AnsiCodePage::TraditionalChinese:
      return traditional.get();
    case AnsiCodePage::Western:
      break;
  }
  return western.get();
}

}  // namespace

std::u16string AnsiToWide(std::string_view bytes, AnsiCodePage codePage) {
  std::u16string wide(static_cast<std::size_t>(ConvertedLength(bytes.size())) * 2, u'\0');
  UErrorCode error = U_ZERO_ERROR;
  const std::int32_t written =
      ucnv_toUChars(ConverterFor(codePage), wide.data(), static_cast<std::int32_t>(wide.size()),
                    bytes.data(), ConvertedLength(bytes.size()), &error);
  wide.resize(U_SUCCESS(error) ? static_cast<std::size_t>(written) : 0);
  return wide;
}

std::string WideToAnsi(std::u16string_view wide, AnsiCodePage codePage) {
  std::string bytes(static_cast<std::size_t>(ConvertedLength(wide.size())) * 2, '\0');
  UErrorCode error = U_ZERO_ERROR;
  const std::int32_t written =
      ucnv_fromUChars(ConverterFor(codePage), bytes.data(), static_cast<std::int32_t>(bytes.size()),
                      wide.data(), ConvertedLength(wide.size()), &error);
  bytes.resize(U_SUCCESS(error) ? static_cast<std::size_t>(written) : 0);
  return bytes;
}

}  // namespace updown
