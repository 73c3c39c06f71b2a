#pragma once

#include <optional>
#include <string>

namespace updown {

// Path of the file `name` among those with what windows remember; their folder is made if it is
// missing. Nothing if it cannot be. Any thread.
std::optional<std::string> StatePath(const std::string& name);

}  // namespace updown
