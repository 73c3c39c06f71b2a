#include "service/messages.h"

#include <algorithm>
#include <array>

#include "wire/tags.h"

namespace updown {

namespace {

constexpr std::array<std::uint8_t, 4> kVersion = {1, 0, 0, 0};

}  // namespace

int EncodeMessage(std::span<std::uint8_t> dest, std::uint32_t code, Bytes data) {
  if (dest.size() < kFrameLengthSize) {
    return -1;
  }
  const auto codeBytes = BigEndian32(code);
  AttributeTable table;
  table.Set(tag::kCode, codeBytes);
  table.Set(tag::kData, data);
  table.Set(tag::kVersion, kVersion);
  const int size = EncodeAttributes(table, dest.subspan(kFrameLengthSize));
  if (size < 1) {
    return -1;
  }
  std::ranges::copy(BigEndian32(static_cast<std::uint32_t>(size)), dest.begin());
  return size + static_cast<int>(kFrameLengthSize);
}

int DecodeMessage(Bytes bytes, ServiceReply& reply) {
  if (bytes.size() <= kFrameLengthSize) {
    return 0;
  }
  const std::size_t listSize = ReadBigEndian32(bytes.data());
  if (bytes.size() - kFrameLengthSize < listSize) {
    return 0;
  }
  AttributeTable table;
  if (DecodeAttributes(table, bytes.subspan(kFrameLengthSize, listSize)) < 0 ||
      table.length[tag::kCode] != 4) {
    return -1;
  }
  std::array<std::uint8_t, 4> version = {0xFF, 0xFF, 0xFF, 0xFF};
  const Bytes sent = table.Get(tag::kVersion);
  std::ranges::copy(sent.first(std::min(sent.size(), version.size())), version.begin());
  reply.version = static_cast<std::uint32_t>(version[0] | version[1] << 8 | version[2] << 16) |
                  static_cast<std::uint32_t>(version[3]) << 24;
  reply.code = ReadBigEndian32(table.value[tag::kCode]);
  reply.data = table.Get(tag::kData);
  return static_cast<int>(listSize + kFrameLengthSize);
}

bool ReplyFailed(const ServiceReply& reply) {
  constexpr std::string_view kRefusal = "500";
  return kRefusal.starts_with(AsText(reply.data));
}

}  // namespace updown
