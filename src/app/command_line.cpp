#include "app/command_line.h"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "platform/environment.h"

namespace updown {
namespace {

constexpr std::size_t kPortCharacters = 260;

// The number at the front of blanks and digits, 0 if there is none; nothing if there is anything
// else in it.
std::optional<std::uint32_t> PortOf(const std::string& argument, AnsiCodePage codePage) {
  const std::u16string wide = Utf8ToWide(argument).substr(0, kPortCharacters);
  const std::string text = WideToAnsi(wide, codePage);
  const bool plain = std::all_of(text.begin(), text.end(),
                                 [](char c) { return c == ' ' || (c >= '0' && c <= '9'); });
  return plain ? std::optional(static_cast<std::uint32_t>(LeadingNumber(text))) : std::nullopt;
}

}  // namespace

CommandLine ParseCommandLine(std::span<const std::string> arguments, AnsiCodePage codePage) {
  CommandLine result;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& option = arguments[i];
    result.help = result.help || option == "--help";
    result.version = result.version || option == "--version";
    const bool name = option == "-s" || option == "-S";
    const bool port = option == "-p" || option == "-P";
    if (!name && !port) {
      continue;
    }
    if (++i == arguments.size()) {
      break;
    }
    if (name) {
      result.serverName = WideToAnsi(Utf8ToWide(arguments[i]), codePage);
      continue;
    }
    const std::optional<std::uint32_t> number = PortOf(arguments[i], codePage);
    result.serverPort = number.value_or(0);
    if (!number) {
      break;
    }
  }
  return result;
}

}  // namespace updown
