#pragma once

#include <QString>

#include "resources/string_id.h"

namespace updown {

// A text of the string table as the windows use it.
QString Text(StringId id);

}  // namespace updown
