#include "engine/folder_walk.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <exception>
#include <utility>

#include "engine/package.h"
#include "engine/worker.h"
#include "localdata/file_names.h"
#include "localdata/files.h"
#include "platform/folders.h"
#include "service/result_codes.h"

namespace updown {
namespace {

// The header files of a package lie beside what it brings; people want the latter.
bool IsOwnHeader(const std::string& folder, std::string_view name) {
  return name == HeaderFileOf(folder, false) || name == HeaderFileOf(folder, true);
}

std::string WithoutSlash(std::string path) {
  if (path.ends_with('/')) {
    path.pop_back();
  }
  return path;
}

bool IsItselfOrParent(std::string_view name) { return name == "." || name == ".."; }

// Nothing else can be fetched either, or kept.
bool EndsTheWalk(const TransferResult& failure) {
  switch (failure.code) {
    case result::kFileWrite:
      return failure.systemError == ENOSPC || failure.systemError == EDQUOT;
    case result::kNotEncodable:
      return failure.systemError == ENOMEM;
    case result::kConnection:
    case result::kAuthentication:
      return true;
    default:
      return false;
  }
}

// A record without a path stands for no file; a stopped one may have all of its file.
bool IsHalfFetched(const TransferRecord& file) {
  const bool complete = file.state == TransferState::Stopped && file.totalBytes == file.doneBytes;
  return !complete && !file.RemotePath().empty();
}

}  // namespace

bool FolderWalk::Place::Fits(std::string_view name) const {
  return FitsPath(remote + std::string(name)) && FitsPath(local + std::string(name));
}

FolderWalk::FolderWalk(SchedulerContext& context, TaskPointer task)
    : context_(context), task_(std::move(task)), run_(task_->Run()) {
  const RecordPaths root = task_->record->Paths();
  const std::string path = WithoutSlash(root.remotePath);
  ownName_ = path.substr(path.rfind('/') + 1);
  top_ = root.remotePath + "/";
  folders_.push_back({top_, root.localPath + "/"});
  for (const Record& file : task_->Files()) {
    if (IsHalfFetched(*file)) {
      halfFetched_.push_back({file});
    }
  }
  task_->WalkBegins();
}

std::size_t FolderWalk::WantedWorkers() const {
  const std::lock_guard lock(mutex_);
  return Ended() ? workers_ : Wanted();
}

// Listings come one at a time: a second worker would wait for them with nothing to do.
std::size_t FolderWalk::Wanted() const {
  const std::size_t files = halfFetched_.size() + files_.size();
  const std::size_t listings = !folders_.empty() && listing_ == 0 ? 1 : 0;
  return std::min(kWorkers, workers_ + std::max(files, listings));
}

void FolderWalk::Work() {
  if (!Join()) {
    return;
  }
  bool givesWay = false;
  FileTransfers transfers(context_, *task_, *run_,
                          [&] { return givesWay = givesWay || GivesWay(); });
  for (;;) {
    Taken taken;
    try {
      taken = Take(givesWay);
      givesWay = false;
      if (taken.job) {
        Do(*taken.job, transfers);
        continue;
      }
    } catch (const std::exception&) {
      End(ResultOfException());
      continue;
    }
    if (taken.last) {
      Finish();
    }
    return;
  }
}

bool FolderWalk::Join() {
  const std::lock_guard lock(mutex_);
  if (!over_) {
    ++workers_;
  }
  return !over_;
}

// Looking for a job and leaving are one step: as long as a worker is there that may still bring
// jobs, the last one has not left.
FolderWalk::Taken FolderWalk::Take(bool givesWay) {
  const std::lock_guard lock(mutex_);
  Taken taken;
  if (!givesWay || workers_ == 1) {
    taken.job = NextJob();
  }
  if (!taken.job) {
    --workers_;
    over_ = workers_ == 0;
    taken.last = over_;
  }
  if (const std::size_t before = std::exchange(wanted_, Wanted()); wanted_ > before) {
    context_.schedulerWake.Set();
  }
  return taken;
}

std::optional<FolderWalk::Job> FolderWalk::NextJob() {
  if (Ended()) {
    return std::nullopt;
  }
  if (!halfFetched_.empty()) {
    HalfFetched file = std::move(halfFetched_.front());
    halfFetched_.pop_front();
    taken_.push_back(file.record);
    writing_[file.record->LocalPath()];
    return file;
  }
  if (File file; TakeFile(file)) {
    return file;
  }
  if (folders_.empty()) {
    return std::nullopt;
  }
  Place place = std::move(folders_.front());
  folders_.pop_front();
  ++listing_;
  return place;
}

bool FolderWalk::TakeFile(File& file) {
  while (!files_.empty()) {
    file = std::move(files_.front());
    files_.pop_front();
    const auto [writing, free] = writing_.try_emplace(file.paths.localPath);
    if (free) {
      failedBefore_.erase(file.paths.localPath);
      ChooseRecord(file);
      return true;
    }
    writing->second.push_back(std::move(file));
  }
  return false;
}

// The record that stands for the file already, else one that can be done without. No half fetched
// file waits, so that of four records one is free.
void FolderWalk::ChooseRecord(File& file) {
  const auto records = task_->Files();
  for (const Record& record : records) {
    if (std::ranges::count(taken_, record) != 0) {
      continue;
    }
    const std::string present = record->LocalPath();
    file.halfFetched = present == file.paths.localPath;
    if (file.halfFetched || !file.record || present.empty()) {
      file.record = record;
    }
    if (file.halfFetched) {
      break;
    }
  }
  if (!file.record ||
      (!file.halfFetched && !file.record->LocalPath().empty() && records.size() < kWorkers)) {
    file.record = task_->AddFile();
  }
  taken_.push_back(file.record);
}

// One worker for each task that waits for one.
bool FolderWalk::GivesWay() {
  const std::lock_guard lock(mutex_);
  return workers_ > 1 && context_.slotWanted.exchange(false);
}

// A run that was stopped, or for which nobody lists any more at the program's end, leaves the state
// alone.
void FolderWalk::Finish() {
  if (first_.code == result::kOk && !failedBefore_.empty()) {
    first_ = failedBefore_.begin()->second;
  }
  if (!ended_ && !run_->Stopping()) {
    task_->WalkEnds();
    ForgetWhatIsGone();
  }
  const auto state = first_.code == result::kOk ? TransferState::Finished : TransferState::Failed;
  if (!listerGone_ && task_->record->SetStateUnlessStopped(state)) {
    task_->childRecord->state = state;
  }
  EndTaskRun(context_, *task_, first_);
}

// Half fetched files that the service has no more: told once.
void FolderWalk::ForgetWhatIsGone() {
  for (const Record& file : task_->Files()) {
    if (failedBefore_.contains(file->LocalPath())) {
      file->StartFile({});
    }
  }
}

void FolderWalk::Do(const Job& job, FileTransfers& transfers) {
  if (const auto* const half = std::get_if<HalfFetched>(&job)) {
    Move(half->record, half->listed, transfers);
  } else if (const auto* const file = std::get_if<File>(&job)) {
    Fetch(*file, transfers);
  } else {
    List(std::get<Place>(job), transfers);
  }
}

void FolderWalk::List(const Place& place, FileTransfers& transfers) {
  ListingAnswer listing;
  if (const std::string local = WithoutSlash(place.local); !MakeFolder(local)) {
    Fail({result::kFileOpen, errno, local});
  } else {
    listing = transfers.List(place.remote);
  }
  if (listing.result.end == SessionResult::End::Cancelled) {
    const std::lock_guard lock(mutex_);
    listerGone_ = listerGone_ || !ended_;
    ended_ = true;
  } else if (!listing.result.Done()) {
    Fail(ResultOfListing(listing.result, place.remote));
  }
  std::erase_if(listing.entries, [&](const DirectoryEntry& entry) {
    return IsItselfOrParent(entry.name) ||
           (place.remote == top_ && IsOwnHeader(ownName_, entry.name));
  });
  Sort(place, listing.entries);
}

void FolderWalk::Sort(const Place& place, const DirectoryList& entries) {
  std::uint32_t files = 0;
  std::uint64_t bytes = 0;
  const std::lock_guard lock(mutex_);
  --listing_;
  for (const DirectoryEntry& entry : entries) {
    const bool folder = entry.type == kEntryFolder;
    if (!folder && entry.type != kEntryFile) {
      continue;
    }
    if (!folder) {
      ++files;
      bytes += entry.size;
    }
    RecordPaths paths{place.remote + entry.name, place.local + entry.name};
    // The "/" behind a folder's name bounds the depth: each level takes two bytes of 260.
    if (!IsSafeName(entry.name) || !place.Fits(folder ? entry.name + "/" : entry.name)) {
      FailLocked({result::kBadCharacters, 0, std::move(paths.remotePath)});
    } else if (folder) {
      folders_.push_back({paths.remotePath + "/", paths.localPath + "/"});
    } else {
      files_.push_back({std::move(paths), entry.size, nullptr});
    }
  }
  task_->FilesListed(files, bytes);
}

void FolderWalk::Fetch(const File& file, FileTransfers& transfers) {
  const std::string& local = file.paths.localPath;
  if (LocalFileSize(local) == file.size && (file.size != 0 || PathExists(local))) {
    file.record->StartFile({});
    task_->FileIsThere(file.size);
    const std::lock_guard lock(mutex_);
    Release(file.record, local);
    return;
  }
  if (!file.halfFetched) {
    file.record->StartFile(file.paths);
  }
  Move(file.record, true, transfers);
}

// `listed`: this walk has it from a listing. Otherwise one is to come, which counts it, and fetches
// it anew if it has failed.
void FolderWalk::Move(const Record& record, bool listed, FileTransfers& transfers) {
  const std::string local = record->LocalPath();
  TransferResult ended;
  if (Ready(*record)) {
    ended = transfers.Move(*record);
  }
  const TransferState state = record->state;
  if (state == TransferState::Finished) {
    task_->TakeUpFile(*record, listed);
  }
  const std::lock_guard lock(mutex_);
  if (state == TransferState::Queued && ended.code == result::kOk) {
    halfFetched_.push_back({record, listed});  // it gave way
  } else if (ended.code != result::kOk && (listed || EndsTheWalk(ended))) {
    FailLocked(std::move(ended));
  } else if (ended.code != result::kOk) {
    failedBefore_.insert_or_assign(local, std::move(ended));
  }
  Release(record, local);
}

// Somebody may stop the task while a file is made ready: the task is stopped before its child, so
// looking at the task behind the file's change misses nothing.
bool FolderWalk::Ready(TransferRecord& record) const {
  record.state = TransferState::Queued;
  if (task_->record->state == TransferState::Stopped) {
    record.state = TransferState::Stopped;
    return false;
  }
  return true;
}

// What waited for the path has its turn.
void FolderWalk::Release(const Record& record, const std::string& localPath) {
  std::erase(taken_, record);
  auto node = writing_.extract(localPath);
  for (File& file : node.mapped()) {
    files_.push_front(std::move(file));
  }
}

void FolderWalk::Fail(TransferResult failure) {
  const std::lock_guard lock(mutex_);
  FailLocked(std::move(failure));
}

// Behind a stop, failures come from the cut.
void FolderWalk::FailLocked(TransferResult failure) {
  if (Ended()) {
    return;
  }
  const bool ends = EndsTheWalk(failure);
  if (first_.code == result::kOk) {
    first_ = std::move(failure);
  }
  if (ends) {
    ended_ = true;
    run_->Cut();
  }
}

void FolderWalk::End(TransferResult failure) {
  const std::lock_guard lock(mutex_);
  FailLocked(std::move(failure));
  ended_ = true;
  run_->Cut();
}

bool FolderWalk::Ended() const {
  return ended_ || run_->Stopping() || task_->record->state == TransferState::Stopped;
}

}  // namespace updown
