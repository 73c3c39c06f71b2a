#pragma once

#include <cstdint>

#include "service/connection.h"
#include "wire/message_buffer.h"

namespace updown {

// Message codes, the same in both dialects.
namespace message {
inline constexpr std::uint32_t kAuthenticate = 4098;
inline constexpr std::uint32_t kList = 4099;
inline constexpr std::uint32_t kCreateFolder = 4100;
inline constexpr std::uint32_t kRemoveFolder = 4101;
inline constexpr std::uint32_t kRename = 4102;
inline constexpr std::uint32_t kRemoveFile = 4103;
inline constexpr std::uint32_t kReadBlock = 4104;
inline constexpr std::uint32_t kWriteBlock = 4105;
inline constexpr std::uint32_t kFileInformation = 4106;
inline constexpr std::uint32_t kOpenSession = 4352;
inline constexpr std::uint32_t kAttachSession = 4353;
}  // namespace message

// Reply codes.
namespace reply {
inline constexpr std::uint32_t kSuccess = 32768;         // first dialect; 32768 + k: -(8192 + k)
inline constexpr std::uint32_t kCodeBase = 24576;        // result = kCodeBase - reply code
inline constexpr std::uint32_t kSessionGranted = 32773;  // second dialect, on 4352
inline constexpr std::uint32_t kLoginNeeded = 32774;     // second dialect, on 4352
inline constexpr std::uint32_t kBusy = 32776;            // second dialect, on 4352
inline constexpr std::uint32_t kAttached = 4096;         // second dialect, on 4353
}  // namespace reply

inline constexpr std::uint32_t kNoVersionField = 0xFFFFFFFF;

inline constexpr std::size_t kFrameLengthSize = 4;  // does not count itself

// A decoded frame. `data` refers into the message buffer and is good until the buffer's next reset
// or compaction.
struct ServiceReply {
  std::uint32_t version = kNoVersionField;  // attribute 10 as it came, first byte lowest
  std::uint32_t code = 0;
  Bytes data;

  std::uint8_t VersionByte() const { return static_cast<std::uint8_t>(version & 0xFF); }
};

// Writes a whole frame; data of length 0 is left out. Returns its size, the 4 length bytes
// included, or -1 if it does not fit.
int EncodeMessage(std::span<std::uint8_t> dest, std::uint32_t code, Bytes data);

// Takes one frame from the front: its whole size, 0 if it is not complete yet, -1 if it is bad.
int DecodeMessage(Bytes bytes, ServiceReply& reply);

// The exchanges wait within the connection's limits.

// 0 or result::kConnection.
int SendBuffered(Connection& connection, MessageBuffer& buffer);

// Reads until one frame is complete and consumes it; bytes behind it stay unread in the buffer. A
// frame that the buffer cannot hold is refused as soon as its length is known. `most` bytes at a
// time are taken from the connection, here and in the exchanges.
int ReceiveReply(Connection& connection, MessageBuffer& buffer, ServiceReply& reply,
                 std::size_t most = kExchangeCapacity);

// One request and its reply: the first dialect's, with the reply's version and code checked ...
int ExchangeChecked(Connection& connection, std::uint32_t code, Bytes data, MessageBuffer& buffer,
                    ServiceReply& reply, std::size_t most = kExchangeCapacity);
// ... and the second dialect's, where the caller judges the reply.
int ExchangeRaw(Connection& connection, std::uint32_t code, Bytes data, MessageBuffer& buffer,
                ServiceReply& reply, std::size_t most = kExchangeCapacity);

// The first dialect's verdict: 0 for reply::kSuccess, else kCodeBase minus the reply's code.
int ResultOfCode(std::uint32_t code);

// The second dialect's refusal: the data is a prefix of "500", and so is an empty one.
bool ReplyFailed(const ServiceReply& reply);

}  // namespace updown
