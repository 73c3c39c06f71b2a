#pragma once

#include <optional>
#include <string>

namespace updown {

// The file that keeps this identity's unfinished transfers; its folder is made if it is missing.
// Nothing if the application data folder is not known: then nothing is kept.
std::optional<std::string> TaskListPath(const std::string& identityHash);

}  // namespace updown
