#include "widgets/size_texts.h"

#include <array>
#include <charconv>

namespace updown {
namespace {

constexpr std::uint32_t kKilo = 1U << 10U;
constexpr std::uint32_t kMega = 1U << 20U;
constexpr std::uint32_t kGiga = 1U << 30U;

}  // namespace

std::string FormatSize(std::uint64_t bytes) {
  if (bytes == 0) {
    return {};
  }
  if (bytes < kKilo) {
    return std::to_string(bytes) + " B";
  }
  if (bytes < kMega) {
    return FormatKiloBytes(bytes);
  }
  if (bytes < kGiga) {
    return FormatFixed(static_cast<float>(bytes) * 0x1p-20F, 2) + " MB";
  }
  return FormatFixed(static_cast<float>(bytes) * 0x1p-30F, 3) + " GB";
}

std::string FormatKiloBytes(std::uint64_t bytes) { return std::to_string(bytes / kKilo) + " KB"; }

// Not by printf: the toolkit sets the user's locale, whose decimal point may be a comma.
std::string FormatFixed(float value, int digits) {
  std::array<char, 64> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), double{value},
                                 std::chars_format::fixed, digits);
  return {text.data(), end.ptr};
}

}  // namespace updown
