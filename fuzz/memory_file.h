#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>

#include "platform/unique_fd.h"

namespace updown::fuzz {

// A file without a place on disk, for what takes a path.
class MemoryFile {
 public:
  explicit MemoryFile(std::span<const std::uint8_t> bytes) : fd_(memfd_create("fuzz", 0)) {
    if (!fd_ ||
        write(fd_.Get(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
      std::abort();
    }
  }
  std::string Path() const { return "/proc/self/fd/" + std::to_string(fd_.Get()); }

 private:
  UniqueFd fd_;
};

}  // namespace updown::fuzz
