#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace updown {

// The one coding of all binary data, on the wire and on disk: a flat list of attributes
//
//   tag (1 byte, 1 to 254) | length N (2 bytes, big-endian) | N bytes of value
//
// closed by the end mark 255. A tag 0 is a one-byte filler that decoding steps over and encoding
// never writes. Nothing here has state; any thread.

using Bytes = std::span<const std::uint8_t>;

inline constexpr std::uint8_t kEndMark = 255;
inline constexpr int kNoRoom = -28;    // encoding: the destination is too small
inline constexpr int kBadLength = -1;  // decoding: a length runs past the input
inline constexpr std::size_t kAttributeHead = 3;

// A decoded list, or one about to be encoded. Owns nothing: after decoding the values refer into
// the decoded bytes, before encoding into the caller's data.
struct AttributeTable {
  std::array<std::uint16_t, 256> length{};
  std::array<const std::uint8_t*, 256> value{};

  // Attributes of length 0 are left out by the encoder. The data must outlive the table's use and
  // hold at most 65535 bytes; a longer one is cut there.
  void Set(std::uint8_t tag, Bytes data);
  void Set(std::uint8_t tag, std::string_view text);

  // Present, even with length 0.
  bool Has(std::uint8_t tag) const { return value[tag] != nullptr; }
  Bytes Get(std::uint8_t tag) const { return {value[tag], length[tag]}; }
  std::string_view Text(std::uint8_t tag) const;
};

// Writes one attribute, also one of length 0. Returns `value.size()` + 3, or kNoRoom with nothing
// written.
int WriteAttribute(std::span<std::uint8_t> dest, std::uint8_t tag, Bytes value);

// Writes all attributes of non-zero length, ascending by tag, and the end mark. Returns the bytes
// written, end mark included, or kNoRoom (what stands in `dest` then means nothing).
int EncodeAttributes(const AttributeTable& table, std::span<std::uint8_t> dest);

// Clears the table and fills it up to the first end mark or the end of the input, whichever comes
// first. Returns the bytes consumed, or kBadLength with the attributes before the fault in place.
int DecodeAttributes(AttributeTable& table, Bytes source);

// Numbers on the wire are big-endian; the task list file has little-endian ones.
std::array<std::uint8_t, 4> BigEndian32(std::uint32_t number);
std::uint32_t ReadBigEndian32(const std::uint8_t* bytes);
std::uint16_t ReadBigEndian16(const std::uint8_t* bytes);

Bytes AsBytes(std::string_view text);
std::string_view AsText(Bytes bytes);

}  // namespace updown
