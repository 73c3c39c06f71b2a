#pragma once

#include <QString>
#include <string_view>

#include "resources/string_id.h"

namespace updown {

// A text of the string table as the windows use it; `fallback` stands in for an empty one.
QString Text(StringId id);
QString Text(StringId id, std::u16string_view fallback);

}  // namespace updown
