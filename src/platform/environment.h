#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace updown {

// Names of the eight variables that the parent application sets. Six of them are no identifiers of
// a shell, so they can only be set by execve, setenv or `env`.
inline constexpr char kVariableIdentity1[] = "3C9EE1FB-5D92-425d-9774-16549105F344";
inline constexpr char kVariableIdentity2[] = "C938D64454D44264A60AF8474D6AF303";
inline constexpr char kVariableApplication[] = "182980BB42EC4908B5DA097B293223F9";
inline constexpr char kVariableLanguage[] = "B472F97F-0B9E-4cbf-A751-715DC706DF5F";
inline constexpr char kVariableRelayPort[] = "B99242F1C55F489fA98402890C4AA428";
inline constexpr char kVariableRelayAddress[] = "3888693AABCC496aACFF5941A5C10255";
inline constexpr char kVariableRelayClientId[] = "{FC0CD139-1957-4763-8AD2-4519D8EFD888}";
inline constexpr char kVariableAttribute110[] = "E543A803-0D1A-4557-905D-93291D62B5A8";

// Another pace of block transfers than one a second, in milliseconds; 0 for none.
inline constexpr char kVariableBlockPace[] = "UPDOWN_BLOCK_PACE_MS";

// The variable's bytes; nothing if it is not set or does not fit `capacity` bytes with its
// terminator. The environment is only read once threads run, so any thread may ask.
std::optional<std::string> ReadVariable(const char* name, std::size_t capacity);

// Decimal number at the front of `text` after blanks, an optional sign before it; 0 when there is
// none. A number beyond 32 bits keeps its low 32 bits.
std::int32_t LeadingNumber(std::string_view text);

}  // namespace updown
