#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace updown::peer {

using Bytes = std::vector<std::uint8_t>;
using View = std::span<const std::uint8_t>;

// Numbers on the wire have their high byte first.
std::uint16_t Number16At(View bytes, std::size_t at);
std::uint32_t Number32At(View bytes, std::size_t at);
void PutNumber16(Bytes& out, std::uint16_t number);
void PutNumber32(Bytes& out, std::uint32_t number);
void PutBytes(Bytes& out, View bytes);

View AsView(std::string_view text);
std::string AsText(View bytes);

// Writes one list: attribute by attribute in the order of the calls, then End().
class ListWriter {
 public:
  ListWriter& Put(std::uint8_t tag, View value);
  ListWriter& Put8(std::uint8_t tag, std::uint8_t number);
  ListWriter& Put16(std::uint8_t tag, std::uint16_t number);
  ListWriter& Put32(std::uint8_t tag, std::uint32_t number);
  ListWriter& PutText(std::uint8_t tag, std::string_view text);
  Bytes End();

 private:
  Bytes bytes_;
};

// One list as read. Refers to the bytes it was read from.
class List {
 public:
  // Nothing if a length runs past the input. An end mark is not required.
  static std::optional<List> Read(View bytes);

  bool Has(std::uint8_t tag) const { return values_[tag].has_value(); }
  View Value(std::uint8_t tag) const { return values_[tag].value_or(View{}); }
  std::string Text(std::uint8_t tag) const { return AsText(Value(tag)); }
  // Nothing unless the attribute is there with four bytes.
  std::optional<std::uint32_t> Number32(std::uint8_t tag) const;
  std::size_t Consumed() const { return consumed_; }  // end mark included

 private:
  std::array<std::optional<View>, 256> values_{};
  std::size_t consumed_ = 0;
};

// `body` behind its length in four bytes.
Bytes Framed(View body);

}  // namespace updown::peer
