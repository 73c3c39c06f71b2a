#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace updown {

// What the build makes of texts.inc, ascending by id.
struct StringRow {
  std::uint32_t id;
  bool byNumber;                             // found by a bare number, not by its name alone
  std::array<std::u16string_view, 3> texts;  // 1033, 2052, 1028
};

std::span<const StringRow> StringTable();

}  // namespace updown
