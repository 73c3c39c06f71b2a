#include "peer/bytes.h"

namespace updown::peer {

namespace {

constexpr std::uint8_t kFiller = 0;
constexpr std::uint8_t kEndMark = 255;

}  // namespace

std::uint16_t Number16At(View bytes, std::size_t at) {
  return static_cast<std::uint16_t>((bytes[at] << 8) | bytes[at + 1]);
}

std::uint32_t Number32At(View bytes, std::size_t at) {
  return (std::uint32_t{Number16At(bytes, at)} << 16) | Number16At(bytes, at + 2);
}

void PutNumber16(Bytes& out, std::uint16_t number) {
  out.push_back(static_cast<std::uint8_t>(number >> 8));
  out.push_back(static_cast<std::uint8_t>(number & 0xFF));
}

void PutNumber32(Bytes& out, std::uint32_t number) {
  PutNumber16(out, static_cast<std::uint16_t>(number >> 16));
  PutNumber16(out, static_cast<std::uint16_t>(number & 0xFFFF));
}

void PutBytes(Bytes& out, View bytes) { out.insert(out.end(), bytes.begin(), bytes.end()); }

View AsView(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string AsText(View bytes) { return {bytes.begin(), bytes.end()}; }

ListWriter& ListWriter::Put(std::uint8_t tag, View value) {
  bytes_.push_back(tag);
  PutNumber16(bytes_, static_cast<std::uint16_t>(value.size()));
  PutBytes(bytes_, value.first(value.size() & 0xFFFF));
  return *this;
}

ListWriter& ListWriter::Put8(std::uint8_t tag, std::uint8_t number) {
  return Put(tag, View{&number, 1});
}

ListWriter& ListWriter::Put16(std::uint8_t tag, std::uint16_t number) {
  Bytes value;
  PutNumber16(value, number);
  return Put(tag, value);
}

ListWriter& ListWriter::Put32(std::uint8_t tag, std::uint32_t number) {
  Bytes value;
  PutNumber32(value, number);
  return Put(tag, value);
}

ListWriter& ListWriter::PutText(std::uint8_t tag, std::string_view text) {
  return Put(tag, AsView(text));
}

Bytes ListWriter::End() {
  bytes_.push_back(kEndMark);
  return std::move(bytes_);
}

std::optional<List> List::Read(View bytes) {
  List list;
  std::size_t at = 0;
  while (at < bytes.size()) {
    const std::uint8_t tag = bytes[at++];
    if (tag == kEndMark) break;
    if (tag == kFiller) continue;
    if (bytes.size() - at < 2) return std::nullopt;
    const std::size_t length = Number16At(bytes, at);
    at += 2;
    if (bytes.size() - at < length) return std::nullopt;
    list.values_[tag] = bytes.subspan(at, length);
    at += length;
  }
  list.consumed_ = at;
  return list;
}

std::optional<std::uint32_t> List::Number32(std::uint8_t tag) const {
  const View value = Value(tag);
  if (value.size() != 4) return std::nullopt;
  return Number32At(value, 0);
}

Bytes Framed(View body) {
  Bytes frame;
  frame.reserve(body.size() + 4);
  PutNumber32(frame, static_cast<std::uint32_t>(body.size()));
  PutBytes(frame, body);
  return frame;
}

}  // namespace updown::peer
