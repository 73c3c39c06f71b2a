#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "service/operations.h"
#include "wire/attributes.h"

namespace updown {

// The entries of a listing are frames without a code: length L (4 bytes, big-endian), then a bare
// attribute list of L bytes. A length of 0 ends the listing.
enum class EntryKind {
  Incomplete,  // more bytes are needed
  Entry,
  End,
  Bad,  // the list does not decode, lacks one of its attributes, or cannot fit a buffer
};

struct TakenEntry {
  EntryKind kind = EntryKind::Incomplete;
  std::optional<DirectoryEntry> entry;  // of kind Entry only
  std::uint32_t consumed = 0;           // bytes of the entry's frame, length included
};

TakenEntry TakeEntry(Bytes bytes);

// What the entries of one listing may take in memory, in bytes: about a million of usual names. A
// longer one is taken for a listing that never ends, and fails with result::kConnection.
inline constexpr std::size_t kMostListingBytes = std::size_t{128} << 20;

}  // namespace updown
