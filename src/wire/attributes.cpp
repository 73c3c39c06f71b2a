#include "wire/attributes.h"

#include <algorithm>
#include <limits>

namespace updown {

void AttributeTable::Set(std::uint8_t tag, Bytes data) {
  constexpr std::size_t kLongest = std::numeric_limits<std::uint16_t>::max();
  length[tag] = static_cast<std::uint16_t>(std::min(data.size(), kLongest));
  value[tag] = data.data();
}

void AttributeTable::Set(std::uint8_t tag, std::string_view text) { Set(tag, AsBytes(text)); }

std::string_view AttributeTable::Text(std::uint8_t tag) const { return AsText(Get(tag)); }

int WriteAttribute(std::span<std::uint8_t> dest, std::uint8_t tag, Bytes value) {
  if (dest.size() < value.size() + kAttributeHead) {
    return kNoRoom;
  }
  dest[0] = tag;
  dest[1] = static_cast<std::uint8_t>(value.size() >> 8);
  dest[2] = static_cast<std::uint8_t>(value.size() & 0xFF);
  std::copy(value.begin(), value.end(), dest.begin() + kAttributeHead);
  return static_cast<int>(value.size() + kAttributeHead);
}

int EncodeAttributes(const AttributeTable& table, std::span<std::uint8_t> dest) {
  std::size_t used = 0;
  for (unsigned tag = 1; tag < kEndMark; ++tag) {
    if (table.length[tag] == 0) {
      continue;
    }
    const auto narrowTag = static_cast<std::uint8_t>(tag);
    const int written = WriteAttribute(dest.subspan(used), narrowTag, table.Get(narrowTag));
    if (written < 0) {
      return kNoRoom;
    }
    used += static_cast<std::size_t>(written);
  }
  if (used == dest.size()) {
    return kNoRoom;
  }
  dest[used] = kEndMark;
  return static_cast<int>(used + 1);
}

int DecodeAttributes(AttributeTable& table, Bytes source) {
  table = AttributeTable{};
  std::size_t at = 0;
  while (at < source.size()) {
    const std::uint8_t tag = source[at++];
    if (tag == kEndMark) {
      break;
    }
    if (tag == 0) {
      continue;
    }
    if (source.size() - at < 2) {
      return kBadLength;
    }
    const std::uint16_t length = ReadBigEndian16(&source[at]);
    at += 2;
    if (source.size() - at < length) {
      return kBadLength;
    }
    table.length[tag] = length;
    table.value[tag] = source.data() + at;
    at += length;
  }
  return static_cast<int>(at);
}

std::array<std::uint8_t, 4> BigEndian32(std::uint32_t number) {
  return {static_cast<std::uint8_t>(number >> 24), static_cast<std::uint8_t>(number >> 16),
          static_cast<std::uint8_t>(number >> 8), static_cast<std::uint8_t>(number)};
}

std::uint32_t ReadBigEndian32(const std::uint8_t* bytes) {
  return static_cast<std::uint32_t>(ReadBigEndian16(bytes)) << 16 | ReadBigEndian16(bytes + 2);
}

std::uint16_t ReadBigEndian16(const std::uint8_t* bytes) {
  return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

Bytes AsBytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string_view AsText(Bytes bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace updown
