#pragma once

#include <cstdint>
#include <string>

namespace updown::bench {

// What this process writes into files, counted where it calls the system: a file system in memory
// does not count for the kernel's own figures. The program that links written_bytes.cpp has its
// calls of write, pwrite, writev and splice taken through there, those of its libraries too.
struct WrittenBytes {
  std::uint64_t headers = 0;  // below a folder INICache
  std::uint64_t others = 0;
};

void CountWrittenBytes();  // from now on
WrittenBytes BytesWritten();

}  // namespace updown::bench
