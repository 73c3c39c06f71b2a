#include "app/offered_name.h"

#include "engine/folder_walk.h"

namespace updown {

std::string OfferedName(std::string_view serviceName) {
  const std::size_t separator = serviceName.find_last_of("/\\");
  if (separator != std::string_view::npos) {
    serviceName.remove_prefix(separator + 1);
  }
  return IsSafeName(serviceName) ? std::string(serviceName) : std::string();
}

}  // namespace updown
