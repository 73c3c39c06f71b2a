#include "app/launch_variables.h"

#include <arpa/inet.h>

#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <system_error>

#include "app/launch_identity.h"
#include "engine/scheduler_context.h"
#include "platform/environment.h"
#include "wire/text_coding.h"

namespace updown {
namespace {

constexpr std::size_t kMostBytes = 260;  // of what the relay is told, terminator included

bool IsIdentityPart(const std::string& value) { return FitsIdentity(value); }

bool IsApplication(const std::string& value) {
  return FitsIdentity(value) && LetterDecode(value, kMostBytes).result > 0;
}

bool IsLanguage(const std::string& value) { return LeadingNumber(value) > 0; }

bool IsNumber(const std::string& value) {
  return value.size() < kMostBytes && value.find_first_of("0123456789") == 0;
}

bool IsPort(const std::string& value) {
  constexpr int kHighestPort = 65535;
  return IsNumber(value) && LeadingNumber(value) > 0 && LeadingNumber(value) <= kHighestPort;
}

bool IsAddress(const std::string& value) {
  in_addr address{};
  return inet_pton(AF_INET, value.c_str(), &address) == 1;
}

struct Variable {
  const char* name;
  bool (*isUsable)(const std::string&);
};

constexpr Variable kVariables[] = {
    {kVariableIdentity1, &IsIdentityPart},  {kVariableIdentity2, &IsIdentityPart},
    {kVariableApplication, &IsApplication}, {kVariableLanguage, &IsLanguage},
    {kVariableRelayPort, &IsPort},          {kVariableRelayAddress, &IsAddress},
    {kVariableRelayClientId, &IsNumber},    {kVariableAttribute110, &IsNumber},
};

}  // namespace

std::vector<LaunchFault> FindLaunchFaults() {
  std::vector<LaunchFault> faults;
  for (const Variable& variable : kVariables) {
    const char* const value = std::getenv(variable.name);
    if (value == nullptr || !variable.isUsable(value)) {
      faults.push_back({variable.name, value == nullptr});
    }
  }
  return faults;
}

std::chrono::milliseconds ReadBlockPace() {
  constexpr std::size_t kMostDigits = 16;
  constexpr std::uint32_t kMostPace = 3600000;
  const std::string text = ReadVariable(kVariableBlockPace, kMostDigits).value_or("");
  std::uint32_t pace = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, pace);
  return error == std::errc() && rest == end && pace <= kMostPace ? std::chrono::milliseconds(pace)
                                                                  : kPace;
}

}  // namespace updown
