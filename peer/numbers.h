#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "peer/options.h"

namespace updown::peer {

// Decimal digits and nothing else.
std::optional<std::uint32_t> ParseNumber(std::string_view text);

// Reads "MESSAGE:MS", as in "4099:3000".
std::optional<Delay> ParseDelay(std::string_view text);

}  // namespace updown::peer
