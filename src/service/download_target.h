#pragma once

#include <chrono>
#include <cstdint>
#include <span>
#include <string>

#include "platform/unique_fd.h"

namespace updown {

// The local file that a download writes. Results are 0 or an errno. One thread.
class DownloadTarget {
 public:
  using Clock = std::chrono::steady_clock;

  // At most this long after a block has been written it is on the disk; how much of a transfer a
  // power loss costs.
  static constexpr std::chrono::seconds kSyncInterval{5};

  // Opens the file, or makes an empty one, and never truncates. EBUSY while another target, also of
  // another process, has it open. An error of the system, or 0.
  int Open(std::string path);
  bool IsOpen() const { return static_cast<bool>(file_); }
  int Get() const { return file_.Get(); }
  std::int64_t Size() const;

  // ENOSPC if the disk has no room for what is left of a file of `size` bytes from `offset` on.
  // What the file has already been given counts as room.
  int CheckRoom(std::uint32_t size, std::uint32_t offset) const;
  // Writes all of it.
  int Write(std::span<const std::uint8_t> bytes, std::uint32_t offset);

  bool SyncIsDue(Clock::time_point now) const { return now - synced_ >= kSyncInterval; }
  int Sync(Clock::time_point now);

  // 0 while the path still leads to the file that is being written: ENOENT once that has been
  // removed, ESTALE once another file stands in its place.
  int CheckPlace() const;
  // The file ends at `size` bytes, also if it was longer before.
  int CutTo(std::uint32_t size);

 private:
  std::string path_;
  UniqueFd file_;
  Clock::time_point synced_;
};

}  // namespace updown
