#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "fuzz/memory_file.h"
#include "localdata/tasklist.h"

namespace {

bool SameRecord(const updown::TransferRecord& a, const updown::TransferRecord& b) {
  const updown::StoredRecord left = a.Store();
  const updown::StoredRecord right = b.Store();
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
  const updown::RecordList loaded = updown::LoadTaskList(input.Path());
  updown::SaveTaskList(loaded, path);
  const updown::RecordList back = updown::LoadTaskList(path);
  unlink(path.c_str());
  auto record = back.begin();
  for (const auto& original : loaded) {
    const updown::RecordPaths paths = original->Paths();
    const bool fits = paths.remotePath.size() + paths.localPath.size() <= 961;
    if (original->state == updown::TransferState::Finished || !fits) {
      continue;
    }
    if (record == back.end() || !SameRecord(*original, **record)) {
      std::abort();
    }
    ++record;
  }
  if (record != back.end()) {
    std::abort();
  }
  return 0;
}
