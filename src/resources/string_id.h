#pragma once

#include <cstdint>

namespace updown {

// Names of the texts. Windows pass the ids on as numbers too: a result code's text and the
// scheduler's "Processing ..." travel as such.
enum class StringId : std::uint32_t {
#define TEXT(id, name, ...) name = (id),
#include "resources/texts.inc"
#undef TEXT
};

}  // namespace updown
