#pragma once

#include <cstdint>

namespace updown::tag {

// Every attribute tag of the relay protocol and of the file service's messages. The task list file
// has a numbering of its own, in localdata/tasklist.h.

// Frame of a service message.
inline constexpr std::uint8_t kCode = 1;      // 4 bytes, message code
inline constexpr std::uint8_t kData = 2;      // path, nested list, raw sessid or status text
inline constexpr std::uint8_t kVersion = 10;  // 4 bytes 1, 0, 0, 0; only the first counts

// Nested lists.
inline constexpr std::uint8_t kSessionState = 7;  // 1 byte, 2: authenticated
inline constexpr std::uint8_t kName = 16;
inline constexpr std::uint8_t kField17 = 17;  // carried, used by nothing
inline constexpr std::uint8_t kField18 = 18;  // carried, used by nothing
inline constexpr std::uint8_t kTime = 19;     // seconds, compared for equality only
inline constexpr std::uint8_t kSize = 20;     // bytes
inline constexpr std::uint8_t kField21 = 21;  // 16 bits; carried, used by nothing
inline constexpr std::uint8_t kType = 22;     // 16 bits; 7 folder, 8 file
inline constexpr std::uint8_t kUserName = 160;
inline constexpr std::uint8_t kPassword = 161;
inline constexpr std::uint8_t kRealm = 162;
inline constexpr std::uint8_t kAppId = 165;
inline constexpr std::uint8_t kSessId = 166;
inline constexpr std::uint8_t kOldPath = 177;
inline constexpr std::uint8_t kNewPath = 178;
inline constexpr std::uint8_t kOffset = 193;
inline constexpr std::uint8_t kLength = 194;
inline constexpr std::uint8_t kPath = 195;

// Relay packets.
inline constexpr std::uint8_t kCommand = 96;  // "Resolve"
inline constexpr std::uint8_t kResolveName = 97;
inline constexpr std::uint8_t kAddresses = 98;    // dotted, separated by ","
inline constexpr std::uint8_t kApplication = 99;  // decimal text
inline constexpr std::uint8_t kTarget = 100;      // "address:port"
inline constexpr std::uint8_t kExtraText = 102;
inline constexpr std::uint8_t kNumber110 = 110;  // 4 bytes

}  // namespace updown::tag
