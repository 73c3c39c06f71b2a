#pragma once

#include <cstdint>
#include <string>

namespace updown::peer {

// A package area as the sending side leaves one: complete, half-arrived and empty packages, header
// texts in the code page of the language, notes with line breaks, attachments from 0 bytes to some
// megabytes. The same seed makes the same bytes.
struct AreaOptions {
  std::string folder;
  int packages = 12;
  std::uint32_t seed = 1;
  int languageId = 1033;
};
// Throws std::exception if it cannot be written; what else lies in the folder stays.
void MakeArea(const AreaOptions& options);

}  // namespace updown::peer
