#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "service/operations.h"
#include "wire/attributes.h"

namespace updown {

// The entries of a listing are frames without a code: length L (4 bytes, big-endian), then a bare
// attribute list of L bytes. A length of 0 ends the listing.
enum class EntryKind {
  Incomplete,  // more bytes are needed
  Entry,
  End,
  Bad,  // the list does not decode, or lacks one of its attributes
};

struct TakenEntry {
  EntryKind kind = EntryKind::Incomplete;
  std::unique_ptr<DirectoryEntry> entry;  // of kind Entry only
  std::uint32_t consumed = 0;             // bytes of the entry's frame, length included
};

TakenEntry TakeEntry(Bytes bytes);

// What the entries of one listing may take in memory, in bytes: about a million of usual names. A
// longer one is taken for a listing that never ends: it fails with result::kConnection and without
// an entry, and its connection is cut, since what follows on it answers no request.
inline constexpr std::size_t kMostListingBytes = std::size_t{128} << 20;

}  // namespace updown
