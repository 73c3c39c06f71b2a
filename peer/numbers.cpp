#include "peer/numbers.h"

#include <charconv>

namespace updown::peer {

std::optional<std::uint32_t> ParseNumber(std::string_view text) {
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return number;
}

std::optional<Delay> ParseDelay(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const auto message = ParseNumber(text.substr(0, colon));
  const auto duration = ParseNumber(text.substr(colon + 1));
  if (!message || !duration) return std::nullopt;
  return Delay{*message, *duration};
}

}  // namespace updown::peer
