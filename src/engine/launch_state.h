#pragma once

#include <cstdint>
#include <string>

#include "resources/languages.h"

namespace updown {

inline constexpr std::uint32_t kDefaultServerPort = 8080;
inline constexpr std::int32_t kDefaultLanguage = kLanguages.front().id;

// What this launch is: written by start-up before any other thread exists, read-only from then on
// and passed by reference to whoever needs it. It outlives all windows and threads.
struct LaunchState {
  std::string identityHash;  // 32 lower-case hexadecimal digits; names list file, cache, event
  std::string appid;         // presented when the shared session opens
  std::string serverName;    // -s, in the ANSI code page
  std::uint32_t serverPort = kDefaultServerPort;  // -p; connections use the low 16 bits
  std::int32_t languageId = kDefaultLanguage;

  AnsiCodePage CodePage() const { return LanguageOf(languageId).codePage; }
};

}  // namespace updown
