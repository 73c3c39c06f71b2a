#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/unique_fd.h"
#include "service/connection.h"

namespace updown {

class DownloadTarget;

// Takes bytes from a connection to a file inside the kernel, through a pipe. Made for one download;
// one thread.
class BlockPipe {
 public:
  enum class Outcome {
    Moved,
    ConnectionFailed,  // the connection says why
    FileFailed,        // `error` says why
    Unsupported,       // nothing has been taken from the connection that is not in the file
  };
  struct Result {
    Outcome outcome = Outcome::Moved;
    std::uint32_t moved = 0;  // bytes in the file
    int error = 0;
  };

  // Moves at least one byte and at most `most` to the file's `offset`. Once it has given
  // Unsupported, for lack of a pipe or of support by socket or file system, it always does.
  Result Move(Connection& connection, DownloadTarget& target, std::uint32_t offset,
              std::uint32_t most);

 private:
  bool Open();
  Result Empty(DownloadTarget& target, std::uint32_t offset, std::uint32_t filled);
  int EmptyByHand(DownloadTarget& target, std::uint32_t offset, std::uint32_t filled);

  UniqueFd readEnd_;
  UniqueFd writeEnd_;
  std::uint32_t capacity_ = 0;
  bool unsupported_ = false;
};

}  // namespace updown
