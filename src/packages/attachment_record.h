#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "service/operations.h"

namespace updown {

namespace attachment_column {
inline constexpr int kName = 0;
inline constexpr int kSize = 1;
inline constexpr int kType = 2;
inline constexpr int kTime = 3;
inline constexpr int kSave = 4;
inline constexpr int kCount = 5;
}  // namespace attachment_column

// One file of a package: what of its entry is shown.
struct AttachmentRecord {
  explicit AttachmentRecord(const DirectoryEntry& entry);

  std::string name;                // UTF-8
  std::uint32_t modificationTime;  // seconds
  std::uint32_t size;              // bytes
  std::uint16_t type;              // kEntryFolder, kEntryFile
};

// "2008-01-15 09:30" in local time.
std::u16string TimeText(std::uint32_t seconds);

// What the columns but Save show, as far as the record decides it.
std::u16string AttachmentText(const AttachmentRecord& record, int column);

// Name, size, type and time on a line each, for the row's tool tip.
std::u16string AttachmentTip(const AttachmentRecord& record);

// Positive if `a`, which stands above `b`, belongs below it in a list that is sorted by `column` in
// `direction` (1 or -1). Keys are compared after multiplication with the direction, sizes and times
// as unsigned numbers: 0 comes first either way.
int CompareAttachments(const AttachmentRecord& a, const AttachmentRecord& b, int column,
                       int direction);

}  // namespace updown
