#include "service/nested_list.h"

#include "wire/tags.h"

namespace updown {

std::optional<std::uint32_t> Number32(const AttributeTable& table, std::uint8_t tag) {
  if (table.length[tag] != 4) {
    return std::nullopt;
  }
  return ReadBigEndian32(table.value[tag]);
}

std::optional<std::uint16_t> Number16(const AttributeTable& table, std::uint8_t tag) {
  if (table.length[tag] != 2) {
    return std::nullopt;
  }
  return ReadBigEndian16(table.value[tag]);
}

SessionGrant DecodeSessionGrant(Bytes data) {
  AttributeTable table;
  SessionGrant grant;
  grant.decodable = DecodeAttributes(table, data) >= 0;
  grant.state = table.length[tag::kSessionState] == 1 ? *table.value[tag::kSessionState] : 0;
  grant.appid = table.Text(tag::kAppId);
  grant.sessid = table.Text(tag::kSessId);
  return grant;
}

std::optional<FileInformation> DecodeFileInformation(Bytes data) {
  AttributeTable table;
  if (DecodeAttributes(table, data) < 0) {
    return std::nullopt;
  }
  const auto time = Number32(table, tag::kTime);
  const auto size = Number32(table, tag::kSize);
  if (!time || !size) {
    return std::nullopt;
  }
  return FileInformation{std::string(table.Text(tag::kName)), *time, *size};
}

int EncodeBlockRequest(const BlockRequest& request, std::span<std::uint8_t> dest) {
  const auto offset = BigEndian32(request.offset);
  const auto length = BigEndian32(request.length);
  std::size_t used = 0;
  const auto write = [&](std::uint8_t tag, Bytes value) {
    const int written = WriteAttribute(dest.subspan(used), tag, value);
    used += static_cast<std::size_t>(written < 0 ? 0 : written);
    return written >= 0;
  };
  if (!write(tag::kOffset, offset) || !write(tag::kLength, length) ||
      !write(tag::kPath, AsBytes(request.path)) || used == dest.size()) {
    return kNoRoom;
  }
  dest[used] = kEndMark;
  return static_cast<int>(used + 1);
}

std::optional<BlockRequest> DecodeBlockRequest(Bytes data) {
  AttributeTable table;
  if (DecodeAttributes(table, data) < 0) {
    return std::nullopt;
  }
  const auto offset = Number32(table, tag::kOffset);
  const auto length = Number32(table, tag::kLength);
  if (!offset || !length) {
    return std::nullopt;
  }
  return BlockRequest{*offset, *length, std::string(table.Text(tag::kPath))};
}

}  // namespace updown
