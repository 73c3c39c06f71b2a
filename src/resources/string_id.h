#pragma once

#include <cstdint>

namespace updown {

// Names of the texts; the numbers are those of texts.inc.
enum class StringId : std::uint32_t {
#define TEXT(id, name, ...) name = (id),
#include "resources/texts.inc"
#undef TEXT
};

}  // namespace updown
