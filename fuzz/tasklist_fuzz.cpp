#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "fuzz/memory_file.h"
#include "localdata/tasklist.h"

namespace {

bool SameRecord(const updown::StoredRecord& left, const updown::StoredRecord& right) {
  return left.paths.remotePath == right.paths.remotePath &&
         left.paths.localPath == right.paths.localPath && left.totalBytes == right.totalBytes &&
         left.doneBytes == right.doneBytes && left.remoteTime == right.remoteTime &&
         left.recordId == right.recordId && left.parentRecordId == right.parentRecordId &&
         left.isFolder == right.isFolder && left.direction == right.direction &&
         left.state == right.state;
}

}  // namespace

// Whatever was loaded and fits a record must come back from a save as it went in.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = "/dev/shm/updown-tasklist-fuzz-" + std::to_string(getpid());
  const updown::fuzz::MemoryFile input({data, size});
  const std::vector<updown::StoredRecord> loaded = updown::LoadTaskList(input.Path());
  if (updown::SaveTaskList(loaded, path) != 0) {
    std::abort();
  }
  const std::vector<updown::StoredRecord> back = updown::LoadTaskList(path);
  unlink(path.c_str());
  auto next = back.begin();
  for (const updown::StoredRecord& original : loaded) {
    const bool fits = original.paths.remotePath.size() + original.paths.localPath.size() <= 961;
    if (original.state == updown::TransferState::Finished || !fits) {
      continue;
    }
    if (next == back.end() || !SameRecord(original, *next++)) {
      std::abort();
    }
  }
  if (next != back.end()) {
    std::abort();
  }
  return 0;
}
