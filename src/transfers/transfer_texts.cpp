#include "transfers/transfer_texts.h"

#include <algorithm>

#include "resources/string_id.h"
#include "service/result_codes.h"
#include "widgets/size_texts.h"

namespace updown {
namespace {

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

std::string FormatRate(float rate) {
  constexpr float kStep = 1.0F / 1024;
  if (rate < 1024) {
    return FormatFixed(rate, 0) + " B/s";
  }
  rate *= kStep;
  if (rate < 1024) {
    return FormatFixed(rate, 2) + " KB/s";
  }
  rate *= kStep;
  if (rate < 1024) {
    return FormatFixed(rate, 2) + " MB/s";
  }
  return FormatFixed(rate * kStep, 2) + " GB/s";
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
