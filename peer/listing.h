#pragma once

#include <optional>
#include <vector>

#include "peer/bytes.h"
#include "peer/files.h"
#include "peer/options.h"

namespace updown::peer {

// What follows the reply frame of a listing: one list in a frame of its own for each entry, and
// four zero bytes behind the last. `fault` may spoil it.
Bytes EncodeListing(const std::vector<FolderEntry>& entries, const std::optional<Fault>& fault);

}  // namespace updown::peer
