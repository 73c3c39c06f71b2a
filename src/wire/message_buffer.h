#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "wire/attributes.h"

namespace updown {

inline constexpr std::uint32_t kExchangeCapacity = 32768;  // every service exchange and transfer
inline constexpr std::uint32_t kTaskListCapacity = 1024;   // one record of the task list file

// A byte buffer of fixed capacity with a read and a write cursor:
//
//   0 <= read cursor <= write cursor <= capacity
//
// It never grows. Made by the operation that needs it, used by that one thread. When memory is
// exhausted, making one throws std::bad_alloc like any allocation of the program.
class MessageBuffer {
 public:
  explicit MessageBuffer(std::uint32_t capacity);

  std::uint32_t Capacity() const { return capacity_; }
  void Reset() { read_ = write_ = 0; }

  std::uint32_t Unread() const { return write_ - read_; }
  // Space behind the write cursor; space before the read cursor does not count until Compact.
  std::uint32_t Free() const { return capacity_ - write_; }

  std::uint8_t* ReadCursor() { return data_.get() + read_; }
  std::uint8_t* WriteCursor() { return data_.get() + write_; }
  Bytes UnreadBytes() const { return {data_.get() + read_, Unread()}; }
  std::span<std::uint8_t> FreeBytes() { return {data_.get() + write_, Free()}; }

  void AdvanceRead(std::uint32_t count) { read_ += count; }
  void AdvanceWrite(std::uint32_t count) { write_ += count; }

  // Moves the bytes from `position` (an offset from the start of the data) to the front. Returns 0,
  // or -1 with nothing changed if `position` does not lie between the cursors.
  int Compact(std::uint32_t position);
  // Compact at the read cursor, which always succeeds.
  void CompactUnread() { Compact(read_); }

 private:
  std::uint32_t capacity_;
  std::uint32_t read_ = 0;
  std::uint32_t write_ = 0;
  std::unique_ptr<std::uint8_t[]> data_;
};

}  // namespace updown
