#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "engine/kept_tasks.h"
#include "engine/task_store.h"
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

// The program's start with such a list: each top record that stays has a task and a number of its
// own, and a save of them all comes through.
void Restore(const std::vector<updown::StoredRecord>& loaded) {
  using namespace updown;
  const PackageCache cache("/nowhere/INICache/0");
  const LaunchState launch;
  TaskStore store(std::make_shared<TaskQueue>(), launch);
  for (const auto& record : RestoredRecords(loaded, cache)) {
    store.AddStoredRecord(record);
  }
  store.RestoreTasks([](TaskId) {});
  std::set<std::uint32_t> numbers;
  for (const auto& record : store.Records()) {
    if (record->recordId == 0 || !numbers.insert(record->recordId).second) {
      std::abort();
    }
  }
  while (store.Queue().NextRunnableTask()) {
  }
  KeptRecords(store.Records(), cache);
}

}  // namespace

// Whatever was loaded and fits a record must come back from a save as it went in.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = std::filesystem::temp_directory_path() / "list";
  const updown::fuzz::MemoryFile input({data, size});
  const std::vector<updown::StoredRecord> loaded = updown::LoadTaskList(input.Path());
  Restore(loaded);
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
