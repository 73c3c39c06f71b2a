#include "engine/file_transfers.h"

#include "resources/string_id.h"
#include "service/result_codes.h"
#include "service/transfer.h"

namespace updown {
namespace {

// The second dialect has no reply of its own for it.
bool IsOfMissingFile(int code) {
  return code == result::kNoSuchRemoteFile || code == result::kNotDecodable;
}

}  // namespace

TransferResult ResultOfListing(const SessionResult& ended, const std::string& path) {
  if (ended.Done()) {
    return {};
  }
  int code = static_cast<int>(0U - ended.report);
  if (ended.end != SessionResult::End::Failed) {
    code = result::kAuthentication;
  } else if (ended.report == static_cast<std::uint32_t>(StringId::NetworkError)) {
    code = result::kConnection;
  } else if (ended.report == static_cast<std::uint32_t>(StringId::SystemBusy)) {
    code = result::kBusy;
  } else if (ended.report == static_cast<std::uint32_t>(StringId::FolderReadFailed)) {
    code = result::kNotDecodable;
  }
  return {code, 0, path};
}

TransferResult FileTransfers::Move(TransferRecord& record) {
  nextBlock_.reset();
  fileMoved_ = false;
  followed_ = false;
  for (;;) {
    next_ = Next::Nothing;
    askedPath_ = record.RemotePath();
    TransferResult result = RunTaskTransfer(
        *context_.service, task_.serverName, static_cast<std::uint16_t>(task_.serverPort),
        key_.sessid, record, this, run_.Sockets(), context_.silence);
    EndBlock();
    if (next_ == Next::Nothing) {
      return result;
    }
    if (next_ == Next::FollowRename ? !WaitForRename(record) : !GoesOn()) {
      record.SetStateUnlessStopped(TransferState::Failed);
      return result;
    }
  }
}

ListingAnswer FileTransfers::List(const std::string& path) {
  for (;;) {
    ListingAnswer listing = context_.session->List(path, run_.StopToken());
    const TransferResult ended = ResultOfListing(listing.result, path);
    next_ = Next::Nothing;
    if (ended.code != result::kConnection || !TriesAgain(ended) || !GoesOn()) {
      return listing;
    }
  }
}

bool FileTransfers::BeforeBlock(TransferRecord& record) {
  if ((nextBlock_ && !run_.WaitUntil(*nextBlock_)) || givesWay_()) {
    return false;
  }
  nextBlock_ = TaskRun::Clock::now() + context_.pace;
  askedPath_ = record.RemotePath();
  inBlock_ = run_.BeginBlock();
  return inBlock_;
}

void FileTransfers::EndBlock() {
  if (std::exchange(inBlock_, false)) {
    run_.EndBlock();
  }
}

void FileTransfers::BlockDone(TransferRecord& record) {
  EndBlock();
  run_.NoteBlock();
  renewed_ = false;
  fileMoved_ = true;
  followed_ = false;
  waited_ = 0;
  if (record.keepAcrossRestart != 0) {  // else no row shows it, and no list stores it
    context_.events->BlockDone(task_.id);
  }
}

// Before the first block a failure is told at once: somebody may be looking at a wrong name.
bool FileTransfers::TriesAgain(const TransferResult& failure) {
  if (run_.Stopping()) {
    return false;
  }
  if (failure.code == result::kAuthentication && !renewed_) {
    next_ = Next::Renew;
  } else if (failure.code == result::kConnection && run_.HasMoved() &&
             waited_ < context_.reconnectDelays.size()) {
    next_ = Next::Reconnect;
  } else if (IsOfMissingFile(failure.code) && fileMoved_ && !followed_ &&
             !context_.reconnectDelays.empty()) {
    next_ = Next::FollowRename;
  }
  return next_ != Next::Nothing;
}

bool FileTransfers::GoesOn() { return next_ == Next::Renew ? Renew() : WaitToReconnect(); }

bool FileTransfers::Renew() {
  renewed_ = true;
  const std::optional<SessionKey> key = context_.session->Renew(key_, run_.StopToken());
  if (key) {
    key_ = *key;
  }
  return key.has_value();
}

// The file had blocks to give, so that its package may have been renamed: the service does so
// before the record learns the new path.
bool FileTransfers::WaitForRename(const TransferRecord& record) {
  followed_ = true;
  const auto moved = [&] { return record.RemotePath() != askedPath_; };
  if (!moved()) {
    run_.WaitUntil(TaskRun::Clock::now() + context_.reconnectDelays.front());
  }
  return !run_.Stopping() && moved();
}

bool FileTransfers::WaitToReconnect() {
  const auto delay = context_.reconnectDelays[waited_++];
  if (task_.record->keepAcrossRestart != 0) {
    context_.events->TaskWaiting(task_.id);
  }
  return run_.WaitUntil(TaskRun::Clock::now() + delay);
}

}  // namespace updown
