#pragma once

#include <string>
#include <string_view>

namespace updown {

// What a Save dialog offers for a name from the service: its last component, whatever separator
// stands before it; empty for a name that cannot be a file's.
std::string OfferedName(std::string_view serviceName);

}  // namespace updown
