#include "bench/written_bytes.h"

#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <string_view>

namespace updown::bench {
namespace {

std::atomic<bool> counting{false};
std::atomic<std::uint64_t> headerBytes{0};
std::atomic<std::uint64_t> otherBytes{0};

ssize_t Count(int file, ssize_t moved) {
  struct stat status {};
  if (!counting || moved <= 0 || fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) {
    return moved;
  }
  std::array<char, 4096> path{};
  const std::string link = "/proc/self/fd/" + std::to_string(file);
  const ssize_t length = readlink(link.c_str(), path.data(), path.size());
  const std::string_view name(path.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
  (name.find("/INICache/") == std::string_view::npos ? otherBytes : headerBytes) +=
      static_cast<std::uint64_t>(moved);
  return moved;
}

}  // namespace

void CountWrittenBytes() { counting = true; }

WrittenBytes BytesWritten() { return {headerBytes, otherBytes}; }

}  // namespace updown::bench

// NOLINTBEGIN: these take the place of the C library's own
extern "C" {
ssize_t write(int file, const void* bytes, size_t size) {
  return updown::bench::Count(file, syscall(SYS_write, file, bytes, size));
}
ssize_t pwrite(int file, const void* bytes, size_t size, off_t at) {
  return updown::bench::Count(file, syscall(SYS_pwrite64, file, bytes, size, at));
}
ssize_t pwrite64(int file, const void* bytes, size_t size, off64_t at) {
  return updown::bench::Count(file, syscall(SYS_pwrite64, file, bytes, size, at));
}
ssize_t writev(int file, const iovec* pieces, int count) {
  return updown::bench::Count(file, syscall(SYS_writev, file, pieces, count));
}
ssize_t splice(int from, off64_t* fromAt, int to, off64_t* toAt, size_t size, unsigned flags) {
  return updown::bench::Count(to, syscall(SYS_splice, from, fromAt, to, toAt, size, flags));
}
}
// NOLINTEND
