#pragma once

#include <cstdint>
#include <string>

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

// One file of a package: its entry, and the package in which it lies.
struct AttachmentRecord {
  std::string package;
  DirectoryEntry entry;
  bool removing = false;  // on the service, right now

  const std::string& Name() const { return entry.name; }  // UTF-8
  std::string Path() const { return "/" + package + "/" + entry.name; }

  bool operator==(const AttachmentRecord& other) const;
};

// "2008-01-15 09:30" in local time.
std::u16string TimeText(std::uint32_t seconds);

// What the columns but Save show.
std::u16string AttachmentText(const DirectoryEntry& entry, int column);

// Name, size, type and time on a line each, for the row's tool tip.
std::u16string AttachmentTip(const DirectoryEntry& entry);

}  // namespace updown
