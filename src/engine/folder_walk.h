#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "engine/file_transfers.h"

namespace updown {

// One run of a folder task: fetches what the folder record stands for, by up to four workers, a
// file each at a time. Files that an earlier run has left half fetched come first, then those of
// the listings, which the workers ask for as they run out of files. Nothing is written by two of
// them at once.
//
// What fails, or has a name that cannot be kept safely, is left out, and all else still fetched; a
// full disk, a lost session or connection and a stop end it at once, with all its files. A
// package's own header files, at the top, are left out.
//
// All workers are alike. Any thread.
class FolderWalk {
 public:
  static constexpr std::size_t kWorkers = 4;

  // The task's run has begun. Both outlive the workers.
  FolderWalk(SchedulerContext& context, TaskPointer task);

  // How many workers it has use for now, those at work among them.
  std::size_t WantedWorkers() const;

  // Works as long as there is something to do and no other task has more right to the worker. The
  // last worker that leaves ends the task's run. Nothing is done once that has happened.
  void Work();

 private:
  struct Place {  // a folder on both sides, each path ending in "/"
    std::string remote;
    std::string local;

    bool Fits(std::string_view name) const;
  };
  using Record = std::shared_ptr<TransferRecord>;
  struct File {
    RecordPaths paths;
    std::uint32_t size = 0;
    Record record;             // that is to stand for it
    bool halfFetched = false;  // it does already
  };
  struct HalfFetched {
    Record record;
    bool listed = false;  // by this walk: it gave way
  };
  // A file to go on with, a file, or a folder to be listed.
  using Job = std::variant<HalfFetched, File, Place>;
  struct Taken {
    std::optional<Job> job;  // nothing: the worker has left
    bool last = false;       // and was the last one
  };

  bool Join();
  Taken Take(bool givesWay);
  std::size_t Wanted() const;
  std::optional<Job> NextJob();
  bool TakeFile(File& file);
  bool GivesWay();
  void Finish();
  void ForgetWhatIsGone();

  void Do(const Job& job, FileTransfers& transfers);
  void List(const Place& place, FileTransfers& transfers);
  void Sort(const Place& place, const DirectoryList& entries);
  void Fetch(const File& file, FileTransfers& transfers);
  void Move(const Record& record, bool listed, FileTransfers& transfers);
  void ChooseRecord(File& file);
  bool Ready(TransferRecord& record) const;
  void Release(const Record& record, const std::string& localPath);

  void Fail(TransferResult failure);
  void FailLocked(TransferResult failure);
  void End(TransferResult failure);
  bool Ended() const;

  SchedulerContext& context_;
  const TaskPointer task_;
  const std::shared_ptr<TaskRun> run_;
  std::string ownName_;  // of the folder
  std::string top_;      // its path with a "/"

  mutable std::mutex mutex_;  // guards what follows
  std::size_t workers_ = 0;
  std::size_t listing_ = 0;  // of them
  std::size_t wanted_ = 1;   // when last looked at
  bool over_ = false;        // the last one has left
  bool ended_ = false;       // nothing more is begun
  bool listerGone_ = false;
  TransferResult first_;  // failure
  std::deque<HalfFetched> halfFetched_;
  std::deque<File> files_;
  std::deque<Place> folders_;
  // Local paths that are being written, with what has to wait for the end of that.
  std::map<std::string, std::vector<File>> writing_;
  std::vector<Record> taken_;  // of the task's Files()
  // Half fetched files that have failed, by local path, until a listing brings them once more.
  std::map<std::string, TransferResult> failedBefore_;
};

}  // namespace updown
