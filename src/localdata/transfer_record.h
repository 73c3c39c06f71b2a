#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace updown {

// Stored in the task list file by value. A file may bring any other number; such a record is kept
// and never runs.
enum class TransferState : std::uint32_t {
  Queued = 0,    // may run
  Stopped = 1,   // by the user, or by the scheduler at exit; takes effect between two blocks
  Finished = 2,  // not stored
  Failed = 3,    // waits for Resume or Redo
};

struct RecordPaths {
  std::string remotePath;  // UTF-8, "/"-separated
  std::string localPath;   // UTF-8; a file, or a folder for a folder record
};

// What a save of the task list takes of a record in one go.
struct StoredRecord {
  std::uint32_t direction = 0;
  RecordPaths paths;
  std::uint32_t totalBytes = 0;
  std::uint32_t doneBytes = 0;
  std::uint32_t remoteTime = 0;
  std::uint32_t recordId = 0;
  std::uint32_t parentRecordId = 0;
  std::uint32_t isFolder = 0;
  TransferState state = TransferState::Queued;
  std::uint32_t resultCode = 0;   // of a Failed record, without its sign; 0: not known
  std::uint32_t systemError = 0;  // errno behind it; 0: none
};

// The persisted description of one thing to fetch and how far it got.
//
// Threads: the record's worker and the main thread share it. `state` and the byte counts are single
// words, and a reader may see a value one block old. The two paths change together (a folder's
// child record takes up file after file), under the record's own lock. The plain fields are set
// before a worker knows the record and do not change while it runs.
class TransferRecord {
 public:
  TransferRecord() = default;
  explicit TransferRecord(const StoredRecord& stored);

  std::uint32_t recordId = 0;        // unique in the list, never 0 there
  std::uint32_t parentRecordId = 0;  // 0 on a top record, else the folder record's id
  std::uint32_t isFolder = 0;        // non-zero: stands for a folder tree and has a child record
  std::uint32_t direction = 0;       // 0 download; 1 swaps the two paths on show, nothing more

  std::atomic<TransferState> state{TransferState::Queued};
  std::atomic<std::uint32_t> totalBytes{0};  // as last reported by the service
  std::atomic<std::uint32_t> doneBytes{0};   // the local file is known to be good up to here
  // The last bytes of doneBytes that a power loss could still take back. A block adds to it before
  // doneBytes moves; a reader reads it behind doneBytes, so that the difference never says too
  // much.
  std::atomic<std::uint32_t> unsyncedBytes{0};
  std::atomic<std::uint32_t> remoteTime{0};  // as last reported by the service

  std::atomic<std::uint32_t> resultCode{0};   // why the last run failed, without its sign
  std::atomic<std::uint32_t> systemError{0};  // errno behind it; 0: none

  std::uint32_t keepAcrossRestart = 0;  // set before a worker knows the record; 0: never stored

  RecordPaths Paths() const;
  std::string LocalPath() const;
  std::string RemotePath() const;
  void SetLocalPath(std::string path);

  // Takes up another file: counts and time go to 0 and both paths change, in one step for Store().
  void StartFile(RecordPaths paths);
  void SetPaths(RecordPaths paths);
  // Puts `to` in the place of the folder `from` at the front of the service path. False, changing
  // nothing, if that is not the path's folder nor the path itself, or if the result does not fit.
  bool MoveRemotePath(std::string_view from, std::string_view to);

  // Changes `from` into `to`; false, changing nothing, if the state is another one by now.
  bool ChangeState(TransferState from, TransferState to);
  // Sets `to` unless the state is Stopped; returns whether it did.
  bool SetStateUnlessStopped(TransferState to);

  // `doneBytes` of it is what is on the disk for good.
  StoredRecord Store() const;

 private:
  mutable std::mutex pathLock_;
  RecordPaths paths_;
};

// In the order of their making, which the task list file keeps.
using RecordList = std::list<std::shared_ptr<TransferRecord>>;

}  // namespace updown
