// The three-call MD5 interface is marked deprecated in OpenSSL 3 but stays in the library. The hash
// guards nothing: it names files and an event, and must not change from one version to the next.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "app/launch_identity.h"

#include <algorithm>
#include <cstddef>
#include <openssl/md5.h>
#include <utility>

#include "platform/environment.h"
#include "wire/text_coding.h"

namespace updown {
namespace {

constexpr std::size_t kVariableCharacters = 1024;  // UTF-16 units, terminator included
constexpr std::size_t kVariableBytes = 3 * kVariableCharacters;
constexpr std::size_t kAppidCapacity = 260;
constexpr std::string_view kDefaultIdentity = "UpDown";

// A variable that is missing or too long reads as empty.
std::string ReadText(const char* name) {
  std::string value = ReadVariable(name, kVariableBytes).value_or(std::string());
  if (!FitsIdentity(value)) {
    value.clear();
  }
  return value;
}

std::string Md5Of(std::string_view bytes) {
  std::array<std::uint8_t, MD5_DIGEST_LENGTH> digest{};
  MD5_CTX context;
  MD5_Init(&context);
  MD5_Update(&context, bytes.data(), bytes.size());
  MD5_Final(digest.data(), &context);
  return HexEncode(digest);
}

struct Converted {
  std::string bytes;
  bool lossy;
};

Converted ConvertIdentity(std::string_view launchIdentity, AnsiCodePage codePage) {
  const std::u16string wide =
      Utf8ToWide(launchIdentity.empty() ? kDefaultIdentity : launchIdentity);
  std::string bytes = WideToAnsi(wide, codePage);
  const bool lossy = AnsiToWide(bytes, codePage) != wide;
  return {std::move(bytes), lossy};
}

std::array<std::string, 3> ReadIdentityValues() {
  return {ReadText(kVariableIdentity1), ReadText(kVariableIdentity2),
          ReadText(kVariableApplication)};
}

}  // namespace

bool FitsIdentity(std::string_view value) {
  return value.size() < kVariableBytes && Utf8ToWide(value).size() < kVariableCharacters;
}

std::string JoinLaunchIdentity(const std::array<std::string, 3>& values) {
  std::string identity;
  for (const std::string& value : values) {
    if (!identity.empty()) {
      identity += '-';
    }
    identity += value;
  }
  return identity;
}

std::string IdentityHashOf(std::string_view launchIdentity) {
  const Converted western = ConvertIdentity(launchIdentity, AnsiCodePage::Western);
  return Md5Of(western.lossy ? launchIdentity : western.bytes);
}

std::vector<EarlierName> EarlierNamesOf(std::string_view launchIdentity, AnsiCodePage codePage) {
  std::vector<std::string> seen = {IdentityHashOf(launchIdentity)};
  std::vector<EarlierName> names;
  for (const AnsiCodePage page : {codePage, AnsiCodePage::Western, AnsiCodePage::SimplifiedChinese,
                                  AnsiCodePage::TraditionalChinese}) {
    const Converted converted = ConvertIdentity(launchIdentity, page);
    std::string hash = Md5Of(converted.bytes);
    if (std::find(seen.begin(), seen.end(), hash) == seen.end()) {
      seen.push_back(hash);
      names.push_back({std::move(hash), converted.lossy});
    }
  }
  return names;
}

std::string DecodeAppid(std::string_view value) {
  const std::string bytes = LetterDecode(value, kAppidCapacity).bytes;
  return bytes.substr(0, bytes.find('\0'));
}

std::int32_t LanguageIdOf(std::string_view value) {
  const std::int32_t number = LeadingNumber(value);
  return number > 0 ? number : kDefaultLanguage;
}

std::string InstanceEventNameOf(std::string_view identityHash) {
  return "Global\\" + std::string(identityHash);
}

std::string ReadLaunchIdentity() { return JoinLaunchIdentity(ReadIdentityValues()); }

LaunchState ReadLaunchState() {
  const std::array<std::string, 3> identity = ReadIdentityValues();
  LaunchState launch;
  launch.appid = DecodeAppid(identity[2]);
  launch.languageId = LanguageIdOf(ReadText(kVariableLanguage));
  launch.identityHash = IdentityHashOf(JoinLaunchIdentity(identity));
  return launch;
}

}  // namespace updown
