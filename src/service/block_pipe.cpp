#include "service/block_pipe.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <span>

#include "service/download_target.h"
#include "service/result_codes.h"

namespace updown {

namespace {

constexpr int kPipeCapacity = 1 << 20;  // bytes; as much as an ordinary user may ask for

}  // namespace

bool BlockPipe::Open() {
  if (readEnd_ || unsupported_) {
    return !unsupported_;
  }
  int ends[2] = {-1, -1};
  if (pipe2(ends, O_CLOEXEC) != 0) {
    unsupported_ = true;
    return false;
  }
  readEnd_.Reset(ends[0]);
  writeEnd_.Reset(ends[1]);
  fcntl(ends[0], F_SETPIPE_SZ, kPipeCapacity);
  const int capacity = fcntl(ends[0], F_GETPIPE_SZ);
  capacity_ = static_cast<std::uint32_t>(std::max(capacity, 0));
  unsupported_ = capacity < 1;
  return !unsupported_;
}

BlockPipe::Result BlockPipe::Move(Connection& connection, DownloadTarget& target,
                                  std::uint32_t offset, std::uint32_t most) {
  if (!Open()) {
    return {Outcome::Unsupported};
  }
  std::size_t filled = 0;
  if (connection.ReceiveInto(writeEnd_.Get(), std::min(most, capacity_), filled) != result::kOk) {
    return {Outcome::ConnectionFailed};
  }
  if (filled == 0) {
    unsupported_ = true;
    return {Outcome::Unsupported};
  }
  return Empty(target, offset, static_cast<std::uint32_t>(filled));
}

BlockPipe::Result BlockPipe::Empty(DownloadTarget& target, std::uint32_t offset,
                                   std::uint32_t filled) {
  std::uint32_t done = 0;
  while (done < filled) {
    off_t place = static_cast<off_t>(offset) + done;
    const ssize_t moved =
        splice(readEnd_.Get(), nullptr, target.Get(), &place, filled - done, SPLICE_F_MOVE);
    if (moved > 0) {
      done += static_cast<std::uint32_t>(moved);
      continue;
    }
    const int error = moved == 0 ? EIO : errno;
    if (error == EINTR) {
      continue;
    }
    // The plain write tells whether it is the file that cannot take it.
    unsupported_ = true;
    if (const int failed = EmptyByHand(target, offset + done, filled - done); failed != 0) {
      return {Outcome::FileFailed, done, failed};
    }
    done = filled;
  }
  return {Outcome::Moved, done};
}

int BlockPipe::EmptyByHand(DownloadTarget& target, std::uint32_t offset, std::uint32_t filled) {
  std::array<std::uint8_t, 16384> bytes;
  while (filled > 0) {
    const ssize_t taken =
        read(readEnd_.Get(), bytes.data(), std::min<std::size_t>(bytes.size(), filled));
    if (taken < 0 && errno == EINTR) {
      continue;
    }
    if (taken < 1) {
      return EIO;
    }
    const auto count = static_cast<std::uint32_t>(taken);
    if (const int error = target.Write(std::span(bytes).first(count), offset); error != 0) {
      return error;
    }
    offset += count;
    filled -= count;
  }
  return 0;
}

}  // namespace updown
