#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/launch_state.h"
#include "platform/text.h"

namespace updown {

// Who this launch is, out of what the parent application put into the environment.

// The three identity variables joined with "-": no "-" before the first part that is not empty, so
// "A", "", "C" give "A--C" and "", "B", "" give "B-". UTF-8.
std::string JoinLaunchIdentity(const std::array<std::string, 3>& values);

// MD5 of the identity ("UpDown" stands in for an empty one) as 32 lower-case hexadecimal digits: of
// its text in code page 1252 if that has all its characters, else of its UTF-8 bytes. So it does
// not depend on the language of the launch, and no two texts are one.
std::string IdentityHashOf(std::string_view launchIdentity);

// What an identity was named in earlier versions, which converted it to the code page of the launch
// and put "?" for what that does not have.
struct EarlierName {
  std::string identityHash;
  bool lossy;  // other identities may have had the same name
};
// The different ones of the three code pages, that of the launch first, without today's name.
std::vector<EarlierName> EarlierNamesOf(std::string_view launchIdentity, AnsiCodePage codePage);

// The letter-coded third variable as bytes, up to the first zero byte or foreign letter; empty if
// the text is refused.
std::string DecodeAppid(std::string_view value);

// The number at the front, or 1033 if there is none.
std::int32_t LanguageIdOf(std::string_view value);

// One name for each identity, the same for every user of the machine.
std::string InstanceEventNameOf(std::string_view identityHash);

// False for a value that is too long to be a part of the identity; it counts as empty.
bool FitsIdentity(std::string_view value);

// The joined identity of this process's environment.
std::string ReadLaunchIdentity();

// Reads the environment; `serverName` and `serverPort` keep their defaults.
LaunchState ReadLaunchState();

}  // namespace updown
