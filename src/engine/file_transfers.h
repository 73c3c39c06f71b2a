#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "engine/scheduler_context.h"
#include "service/operations.h"

namespace updown {

// A listing's end in the terms of a transfer: the session tells by the id of a text that it could
// not be opened, or that a reply was no listing. kAuthentication for a login that was given up.
TransferResult ResultOfListing(const SessionResult& ended, const std::string& path);

// Moves files of one run of a task, one after the other, each over as many connections as it takes:
// the pace, the renewal of a session that the service has forgotten, new connections for those that
// were lost, and the new path of a file whose package was renamed. Lives on its worker's thread.
class FileTransfers final : private TransferProgress {
 public:
  // Asked before each block: true leaves the file where it stands.
  using GivesWay = std::function<bool()>;

  FileTransfers(
      SchedulerContext& context, const TransferTask& task, TaskRun& run,
      GivesWay givesWay = [] { return false; })
      : context_(context),
        task_(task),
        run_(run),
        givesWay_(std::move(givesWay)),
        key_(context.session->Key()) {}

  // How it ended; the record's state tells the same, and stays Queued when the file gave way.
  TransferResult Move(TransferRecord& record);
  // A folder's listing, with the same patience.
  ListingAnswer List(const std::string& path);

  bool Stopping() const { return run_.Stopping(); }

 private:
  enum class Next { Nothing, Renew, Reconnect, FollowRename };

  bool BeforeBlock(TransferRecord& record) override;
  void BlockDone(TransferRecord& record) override;
  bool TriesAgain(const TransferResult& failure) override;

  void EndBlock();
  bool GoesOn();
  bool Renew();
  bool WaitToReconnect();
  bool WaitForRename(const TransferRecord& record);

  SchedulerContext& context_;
  const TransferTask& task_;
  TaskRun& run_;
  const GivesWay givesWay_;
  SessionKey key_;
  bool renewed_ = false;  // and nothing has come since
  bool inBlock_ = false;
  bool fileMoved_ = false;  // a block of the file has come
  bool followed_ = false;   // and nothing has come since
  std::string askedPath_;   // of the last request
  std::size_t waited_ = 0;  // how often since the last block
  Next next_ = Next::Nothing;
  std::optional<TaskRun::Clock::time_point> nextBlock_;  // not before
};

}  // namespace updown
