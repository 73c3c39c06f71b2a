#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "wire/attributes.h"

namespace updown {

// The attribute lists that stand inside a message's data.

// One such list encoded for a request, at most 1024 bytes long.
class NestedList {
 public:
  explicit NestedList(const AttributeTable& table) : size_(EncodeAttributes(table, bytes_)) {}

  bool Fits() const { return size_ >= 0; }
  int Size() const { return size_; }  // kNoRoom if it does not fit
  // Holds its end mark and nothing else.
  bool IsEmpty() const { return size_ == 1; }
  Bytes Data() const { return Bytes(bytes_).first(static_cast<std::size_t>(Fits() ? size_ : 0)); }

 private:
  std::array<std::uint8_t, 1024> bytes_;
  int size_;
};

// A big-endian number; nothing if the attribute is absent or of another length.
std::optional<std::uint32_t> Number32(const AttributeTable& table, std::uint8_t tag);
std::optional<std::uint16_t> Number16(const AttributeTable& table, std::uint8_t tag);

// What the second dialect grants a session with. A field whose attribute is absent is empty or 0.
struct SessionGrant {
  bool decodable = false;  // false: the list is bad, the fields hold what stood before the fault
  std::uint8_t state = 0;
  std::string appid;
  std::string sessid;

  bool Authenticated() const { return state == 2; }
};
SessionGrant DecodeSessionGrant(Bytes data);

struct FileInformation {
  std::string name;
  std::uint32_t modificationTime = 0;
  std::uint32_t size = 0;
};
// Nothing if the list is bad or lacks time or size.
std::optional<FileInformation> DecodeFileInformation(Bytes data);

// Which bytes of which file a block message moves.
struct BlockRequest {
  std::uint32_t offset = 0;
  std::uint32_t length = 0;
  std::string path;
};
// Writes the list with all three attributes, also an empty path. Bytes written, or kNoRoom.
int EncodeBlockRequest(const BlockRequest& request, std::span<std::uint8_t> dest);
// Nothing if the list is bad or lacks one of the two numbers.
std::optional<BlockRequest> DecodeBlockRequest(Bytes data);

inline constexpr std::size_t kBlockRequestCapacity = 1024;

}  // namespace updown
