#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "peer/bytes.h"
#include "peer/files.h"

namespace updown::peer {

// Codes of the requests.
namespace message {
inline constexpr std::uint32_t kRelayResolve = 1;  // the relay's two, for faults and records only
inline constexpr std::uint32_t kRelayConnect = 2;
inline constexpr std::uint32_t kLogin = 4098;
inline constexpr std::uint32_t kList = 4099;
inline constexpr std::uint32_t kCreateFolder = 4100;
inline constexpr std::uint32_t kRemoveFolder = 4101;
inline constexpr std::uint32_t kRename = 4102;
inline constexpr std::uint32_t kRemoveFile = 4103;
inline constexpr std::uint32_t kReadBlock = 4104;
inline constexpr std::uint32_t kWriteBlock = 4105;
inline constexpr std::uint32_t kInformation = 4106;
inline constexpr std::uint32_t kOpenSession = 4352;
inline constexpr std::uint32_t kAttach = 4353;
}  // namespace message

// Tags of the attributes inside messages.
namespace tag {
inline constexpr std::uint8_t kCode = 1;
inline constexpr std::uint8_t kData = 2;
inline constexpr std::uint8_t kSessionState = 7;
inline constexpr std::uint8_t kVersion = 10;
inline constexpr std::uint8_t kName = 16;
inline constexpr std::uint8_t kFirstTime = 17;
inline constexpr std::uint8_t kSecondTime = 18;
inline constexpr std::uint8_t kModified = 19;
inline constexpr std::uint8_t kSize = 20;
inline constexpr std::uint8_t kMode = 21;
inline constexpr std::uint8_t kType = 22;
inline constexpr std::uint8_t kUser = 160;
inline constexpr std::uint8_t kPassword = 161;
inline constexpr std::uint8_t kRealm = 162;
inline constexpr std::uint8_t kAppid = 165;
inline constexpr std::uint8_t kSessid = 166;
inline constexpr std::uint8_t kOldPath = 177;
inline constexpr std::uint8_t kNewPath = 178;
inline constexpr std::uint8_t kOffset = 193;
inline constexpr std::uint8_t kLength = 194;
inline constexpr std::uint8_t kPath = 195;
}  // namespace tag

// One reply before it is put into bytes. `tail` follows the frame: entries or a block.
struct Reply {
  std::optional<std::uint32_t> code;
  Bytes data;
  bool version = false;  // attribute 10
  Bytes tail;
};

Bytes FrameOf(const Reply& reply);

struct BlockPlace {
  std::uint32_t offset = 0;
  std::string path;
};

// How the service words what it has to say. The two dialects share frames and requests.
class Dialect {
 public:
  virtual ~Dialect() = default;

  virtual Reply Done(std::uint32_t message) const = 0;
  virtual Reply Refused(std::uint32_t message, Refusal refusal) const = 0;
  virtual Reply LoginNeeded(std::uint32_t message) const = 0;  // also: the login was wrong
  virtual Reply Unknown(std::uint32_t message) const = 0;
  virtual Reply SessionOpened(const std::string& appid, const std::string& sessid,
                              bool authenticated) const = 0;
  virtual Reply Attached() const = 0;
  // The bytes go into the tail.
  virtual Reply Block(const BlockPlace& place, Bytes bytes) const = 0;
  // `list`: name, time and size.
  virtual Reply Information(Bytes list) const = 0;
  virtual Reply WithCode(std::uint32_t code) const = 0;
  // The session that the data of an attach request names; empty if it cannot be read.
  virtual std::string AttachedSession(View data) const = 0;
};

std::unique_ptr<const Dialect> MakeDialect(int number);  // throws std::invalid_argument

}  // namespace updown::peer
