#include "wire/message_buffer.h"

#include <cstring>

namespace updown {

// The data area is left as it comes from the heap: every byte read was written before.
MessageBuffer::MessageBuffer(std::uint32_t capacity)
    : capacity_(capacity), data_(std::make_unique_for_overwrite<std::uint8_t[]>(capacity)) {}

int MessageBuffer::Compact(std::uint32_t position) {
  if (position < read_ || position > write_) {
    return -1;
  }
  if (position == 0) {
    return 0;
  }
  if (position == write_) {
    Reset();
    return 0;
  }
  std::memmove(data_.get(), data_.get() + position, write_ - position);
  write_ -= position;
  read_ = 0;
  return 0;
}

}  // namespace updown
