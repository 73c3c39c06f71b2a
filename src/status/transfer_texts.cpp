#include "status/transfer_texts.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "resources/string_id.h"
#include "service/result_codes.h"

namespace updown {
namespace {

constexpr std::uint32_t kKilo = 1U << 10U;
constexpr std::uint32_t kMega = 1U << 20U;
constexpr std::uint32_t kGiga = 1U << 30U;

// Not by printf: the toolkit sets the user's locale, whose decimal point may be a comma.
std::string Fixed(float value, int digits) {
  std::array<char, 64> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), double{value},
                                 std::chars_format::fixed, digits);
  return {text.data(), end.ptr};
}

std::string TwoDigits(std::uint64_t value) {
  std::string text = std::to_string(value);
  return text.size() < 2 ? "0" + text : text;
}

struct CodeText {
  int code;
  StringId text;
};

// More than a message box tells: a row says why its one transfer ended.
constexpr CodeText kCodeTexts[] = {
    {result::kConnection, StringId::NetworkError},
    {result::kNotEncodable, StringId::ShortOfResources},
    {result::kAuthentication, StringId::AuthenticationFailed},
    {result::kAccessRefused, StringId::AccessDenied},
    {result::kBusy, StringId::SystemBusy},
    {result::kFileOpen, StringId::OpenFailed},
    {result::kNoSuchRemoteFile, StringId::OpenFailed},
    {result::kFileWrite, StringId::WriteFailed},
    {result::kService8210, StringId::Blank},
    {result::kBadCharacters, StringId::BadCharacters},
    {result::kLanguageSettings, StringId::IncompatibleLanguage},
    {result::kInterrupted, StringId::SessionInterrupted},
    {result::kNotImplemented, StringId::NotImplemented},
};

}  // namespace

std::string FormatSize(std::uint32_t bytes) {
  if (bytes == 0) {
    return {};
  }
  if (bytes < kKilo) {
    return std::to_string(bytes) + " B";
  }
  if (bytes < kMega) {
    return FormatKiloBytes(bytes);
  }
  if (bytes < kGiga) {
    return Fixed(static_cast<float>(bytes * 0x1p-20), 2) + " MB";
  }
  return Fixed(static_cast<float>(bytes * 0x1p-30), 3) + " GB";
}

std::string FormatKiloBytes(std::uint32_t bytes) { return std::to_string(bytes >> 10U) + " KB"; }

std::string FormatRate(float rate) {
  constexpr float kStep = 1.0F / 1024;
  if (rate < 1024) {
    return Fixed(rate, 0) + " B/s";
  }
  rate *= kStep;
  if (rate < 1024) {
    return Fixed(rate, 2) + " KB/s";
  }
  rate *= kStep;
  if (rate < 1024) {
    return Fixed(rate, 2) + " MB/s";
  }
  return Fixed(rate * kStep, 2) + " GB/s";
}

std::string FormatRemaining(double seconds) {
  constexpr double kMost = 1e15;
  const auto whole = static_cast<std::uint64_t>(std::clamp(seconds, 0.0, kMost));
  return TwoDigits(whole / 3600) + " : " + TwoDigits(whole % 3600 / 60) + " : " +
         TwoDigits(whole % 60) + " ";
}

std::uint32_t TextOfCode(std::uint32_t code) {
  const auto* const found = std::find_if(
      std::begin(kCodeTexts), std::end(kCodeTexts),
      [code](const CodeText& entry) { return static_cast<std::uint32_t>(-entry.code) == code; });
  return found == std::end(kCodeTexts) ? code : static_cast<std::uint32_t>(found->text);
}

}  // namespace updown
