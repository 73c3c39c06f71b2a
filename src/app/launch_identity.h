#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "engine/launch_state.h"
#include "platform/text.h"

namespace updown {

// Who this launch is, out of what the parent application put into the environment.

// The three identity variables joined with "-": no "-" before the first part that is not empty, so
// "A", "", "C" give "A--C" and "", "B", "" give "B-". UTF-8.
std::string JoinLaunchIdentity(const std::array<std::string, 3>& values);

// MD5 of the identity in the code page ("UpDown" stands in for an empty one) as 32 lower-case
// hexadecimal digits.
std::string IdentityHashOf(std::string_view launchIdentity, AnsiCodePage codePage);

// The letter-coded third variable as bytes, up to the first zero byte or foreign letter; empty if
// the text is refused.
std::string DecodeAppid(std::string_view value);

// The number at the front, or 1033 if there is none.
std::int32_t LanguageIdOf(std::string_view value);

// One name for each identity, the same for every user of the machine.
std::string InstanceEventNameOf(std::string_view identityHash);

// Reads the environment; `serverName` and `serverPort` keep their defaults.
LaunchState ReadLaunchState();

}  // namespace updown
