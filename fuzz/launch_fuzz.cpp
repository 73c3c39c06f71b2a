#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "app/command_line.h"
#include "app/launch_identity.h"
#include "app/launch_variables.h"
#include "platform/environment.h"
#include "wire/relay.h"

// What the parent application hands over. The first byte chooses the code page, the next eight
// texts up to a NUL are the variables, and all that follow the arguments.

namespace {

using namespace updown;

void Must(bool holds) {
  if (!holds) {
    std::abort();
  }
}

std::string TakeText(std::string_view& rest) {
  const std::size_t end = std::min(rest.find('\0'), rest.size());
  std::string text(rest.substr(0, end));
  rest.remove_prefix(std::min(end + 1, rest.size()));
  return text;
}

void CheckConversions(const std::string& text, AnsiCodePage codePage) {
  const std::u16string wide = Utf8ToWide(text);
  Must(wide.size() <= text.size());
  Must(Utf8ToWide(WideToUtf8(wide)) == wide);
  Must(WideToUtf8(wide, 7).size() <= 7);
  const std::u16string converted = AnsiToWide(text, codePage);
  Must(converted.size() <= 2 * text.size());
  Must(Utf8ToWide(WideToUtf8(converted)) == converted);
  // Each character of a code page is at most two bytes.
  Must(WideToAnsi(wide, codePage).size() <= 2 * wide.size());
  Must(EqualIgnoringCase(wide, wide) &&
       CompareIgnoringCase(wide, converted) == -CompareIgnoringCase(converted, wide));
}

void CheckVariables() {
  const LaunchState launch = ReadLaunchState();
  Must(launch.identityHash.size() == 32);
  Must(launch.identityHash.find_first_not_of("0123456789abcdef") == std::string::npos);
  Must(launch.identityHash == IdentityHashOf(ReadLaunchIdentity()));
  Must(launch.languageId > 0 && launch.appid.size() < 260);
  for (const EarlierName& name : EarlierNamesOf(ReadLaunchIdentity(), launch.CodePage())) {
    Must(name.identityHash.size() == 32 && name.identityHash != launch.identityHash);
  }
  Must(FindLaunchFaults().size() <= 8);
  ReadRelayParameters();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) {
    return 0;
  }
  constexpr AnsiCodePage kPages[] = {AnsiCodePage::Western, AnsiCodePage::SimplifiedChinese,
                                     AnsiCodePage::TraditionalChinese};
  const AnsiCodePage codePage = kPages[data[0] % 3];
  std::string_view rest(reinterpret_cast<const char*>(data) + 1, size - 1);
  for (const char* name :
       {kVariableIdentity1, kVariableIdentity2, kVariableApplication, kVariableLanguage,
        kVariableRelayPort, kVariableRelayAddress, kVariableRelayClientId, kVariableAttribute110}) {
    const std::string value = TakeText(rest);
    value.empty() ? unsetenv(name) : setenv(name, value.c_str(), 1);
  }
  CheckVariables();
  std::vector<std::string> arguments;
  while (!rest.empty()) {
    arguments.push_back(TakeText(rest));
    CheckConversions(arguments.back(), codePage);
    DecodeAppid(arguments.back());
  }
  const CommandLine line = ParseCommandLine(arguments, codePage);
  Must(!line.Accepted() || (!line.serverName.empty() && line.serverPort != 0));
  return 0;
}
