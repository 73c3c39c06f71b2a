#include "engine/task_store.h"

#include <algorithm>
#include <cerrno>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "localdata/files.h"
#include "platform/text.h"
#include "service/result_codes.h"

namespace updown {
namespace {

// The task's file or folder goes from the disk. Of an upload the target end is a path on the
// service, which names nothing here.
void DeleteTarget(const TransferRecord& record) {
  if (record.direction != 1) {
    DeleteLocal(record.LocalPath());
  }
}

void Cut(const TransferTask& task) {
  if (const auto run = task.Run()) {
    run->Cut();
  }
}

bool IsInside(std::string_view path, std::string_view folder) {
  return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

bool Writes(const TransferTask& task, std::string_view path) {
  const std::string target = task.record->LocalPath();
  return task.record->direction != 1 &&
         (target == path || IsInside(target, path) || (task.isFolder && IsInside(path, target)));
}

bool FitsBuffer(std::string_view path) { return path.size() < kPathCapacity; }

}  // namespace

TaskStore::TaskStore(std::shared_ptr<TaskQueue> queue, const LaunchState& launch)
    : queue_(std::move(queue)), launch_(launch) {}

RecordIndex& TaskStore::Index() const {
  if (indexStale_) {
    index_.Rebuild(records_);
    indexStale_ = false;
  }
  return index_;
}

std::uint32_t TaskStore::NextRecordId() const { return Index().LowestFreeId(); }

std::shared_ptr<TransferRecord> TaskStore::MakeRecord() const {
  auto record = std::make_shared<TransferRecord>();
  record->recordId = NextRecordId();
  return record;
}

void TaskStore::AppendRecord(const std::shared_ptr<TransferRecord>& record) {
  Index().Add(*record);
  places_.insert_or_assign(record.get(), records_.insert(records_.end(), record));
}

void TaskStore::ForgetRecord(const std::shared_ptr<TransferRecord>& record) {
  if (const auto place = places_.extract(record.get())) {
    Index().Remove(*record);
    records_.erase(place.mapped());
  }
}

void TaskStore::AddStoredRecord(const std::shared_ptr<TransferRecord>& record) {
  record->keepAcrossRestart = 1;
  AppendRecord(record);
}

std::shared_ptr<TransferRecord> TaskStore::MakeTopRecord(const TaskDraft& draft,
                                                         const std::string& localPath, bool keep) {
  if (draft.displayName.empty() || !FitsBuffer(draft.remotePath) || !FitsBuffer(localPath)) {
    return nullptr;
  }
  auto record = keep ? MakeRecord() : std::make_shared<TransferRecord>();
  record->SetPaths({draft.remotePath, localPath});
  record->keepAcrossRestart = keep ? 1 : 0;
  return record;
}

TaskPointer TaskStore::AddDownload(const TaskDraft& draft, const std::string& localPath,
                                   bool keep) {
  const auto record = MakeTopRecord(draft, localPath, keep);
  return record ? AddTask(draft, record) : nullptr;
}

TaskPointer TaskStore::AddFolderDownload(const TaskDraft& draft, const std::string& localFolder) {
  const auto record = MakeTopRecord(draft, localFolder, true);
  if (!record) {
    return nullptr;
  }
  record->isFolder = 1;
  return AddTask(draft, record);
}

TaskPointer TaskStore::AddTask(const TaskDraft& draft,
                               const std::shared_ptr<TransferRecord>& record) {
  if (record->keepAcrossRestart != 0) {
    AppendRecord(record);
  }
  TaskPointer task = MakeTask(record);
  task->serverName = draft.serverName;
  task->serverPort = draft.serverPort;
  if (task->isFolder) {
    task->childRecord = MakeChild(*record);
  }
  // Last of all: from here on the scheduler may run it.
  queue_->Append(task);
  return task;
}

bool TaskStore::IsDuplicate(std::string_view wantedPath) const {
  return wantedPath.empty() || Index().Meets(wantedPath);
}

std::vector<TaskId> TaskStore::FollowRename(const std::string& oldPath,
                                            const std::string& newPath) {
  std::vector<TaskId> moved;
  queue_->ForEachKept([&](TransferTask& task) {
    if (task.record->state != TransferState::Finished && task.MoveRemotePath(oldPath, newPath)) {
      moved.push_back(task.id);
    }
  });
  indexStale_ = indexStale_ || !moved.empty();
  return moved;
}

bool TaskStore::StreamLimitReached() const {
  std::uint32_t unfinished = 0;
  queue_->ForEachKept([&unfinished](const TransferTask& task) {
    unfinished += task.record->state != TransferState::Finished ? 1 : 0;
  });
  return unfinished >= kStreamLimit;
}

bool TaskStore::RestoreTasks(const std::function<void(TaskId)>& announce) {
  if (!queue_->Empty() || records_.empty()) {
    return false;
  }
  RenumberRecords();
  RecordList topRecords;
  std::unordered_map<std::uint32_t, std::shared_ptr<TransferRecord>> firstChildOf;
  for (const auto& record : records_) {
    if (record->parentRecordId == 0) {
      topRecords.push_back(record);
    } else {
      firstChildOf.try_emplace(record->parentRecordId, record);
    }
  }
  std::vector<TaskPointer> tasks;
  for (const auto& record : topRecords) {
    tasks.push_back(MakeTask(record));
    if (tasks.back()->isFolder) {
      const auto child = firstChildOf.find(record->recordId);
      tasks.back()->childRecord = child == firstChildOf.end() ? MakeChild(*record) : child->second;
    }
  }
  FailDoubledTargets(tasks);
  for (TaskPointer& task : tasks) {
    // Announced first, so that no news of its worker comes before.
    announce(task->id);
    queue_->Append(std::move(task));
  }
  return !topRecords.empty();
}

void TaskStore::FailDoubledTargets(const std::vector<TaskPointer>& tasks) {
  std::unordered_map<std::string, TaskPointer> firstOf;
  for (const TaskPointer& task : tasks) {
    const std::string target = task->record->LocalPath();
    if (task->record->direction == 1 || target.empty()) {
      continue;
    }
    const auto [first, isFirst] = firstOf.try_emplace(target, task);
    if (!isFirst) {
      first->second->ForgetProgress();
      task->ForgetProgress();
      task->record->state = TransferState::Failed;
      task->record->resultCode = result::WithoutSign(result::kFileOpen);
      task->record->systemError = EEXIST;
    }
  }
}

TaskPointer TaskStore::MakeTask(const std::shared_ptr<TransferRecord>& record) {
  auto task = std::make_shared<TransferTask>();
  task->id = NewTaskId();
  task->record = record;
  task->serverName = launch_.serverName;
  task->serverPort = launch_.serverPort;
  task->isFolder = record->isFolder != 0;
  return task;
}

std::shared_ptr<TransferRecord> TaskStore::MakeChild(const TransferRecord& folder) {
  auto child = MakeRecord();
  child->parentRecordId = folder.recordId;
  child->direction = folder.direction;
  child->keepAcrossRestart = folder.keepAcrossRestart;
  child->state = folder.state.load();
  AppendRecord(child);
  return child;
}

// Only a damaged list brings a number twice or 0. Two tasks would then share one folder's child,
// and two records one number in the list.
void TaskStore::RenumberRecords() {
  std::unordered_set<std::uint32_t> seen;
  for (const auto& record : records_) {
    if (record->recordId == 0 || !seen.insert(record->recordId).second) {
      record->recordId = NextRecordId();
      seen.insert(record->recordId);
      index_.Add(*record);
    }
  }
}

void TaskStore::Pause(TaskId id) {
  const TaskPointer task = queue_->Find(id);
  if (!task || !task->Stop()) {
    return;
  }
  if (const auto run = task->Run()) {
    run->EndSoon();
    queue_->News().Set();  // the scheduler cuts it in time
  }
}

bool TaskStore::Resume(TaskId id) {
  const TaskPointer task = queue_->Find(id);
  if (!task) {
    return true;
  }
  if (!TakesTarget(*task)) {
    return false;
  }
  task->QueueAgain();
  queue_->MakeReady(id);
  return true;
}

bool TaskStore::Redo(TaskId id) {
  const TaskPointer task = queue_->Find(id);
  if (!task) {
    return true;
  }
  if (!TakesTarget(*task)) {
    return false;
  }
  task->Stop();
  const bool idle = task->ClearAtEnd(
      [task] {
        DeleteTarget(*task->record);
        task->ForgetProgress();
      },
      true);
  if (idle) {
    task->ForgetProgress();
  }
  EndOrCut(task, idle);
  return true;
}

// A run that was begun to clear what is there, or a worker's.
void TaskStore::EndOrCut(const TaskPointer& task, bool idle) {
  idle ? queue_->AddEnding(task) : Cut(*task);
}

// Two that write one file do so one after the other, and the second finds nothing of its own.
bool TaskStore::TakesTarget(TransferTask& task) {
  const std::string target = task.record->LocalPath();
  if (task.record->direction == 1 || target.empty()) {
    return true;
  }
  bool free = true;
  std::vector<TransferTask*> idle;
  queue_->ForEachKept([&](TransferTask& other) {
    if (&other == &task || !Writes(other, target)) {
      return;
    }
    free = free && other.record->state != TransferState::Queued && !other.Running();
    if (other.record->state != TransferState::Finished) {
      idle.push_back(&other);
    }
  });
  free = free && std::ranges::none_of(leaving_, [&](const auto& left) {
           const TaskPointer other = left.lock();
           return other && other->Running() && Writes(*other, target);
         });
  if (!free) {
    return false;
  }
  for (TransferTask* const other : idle) {
    other->ForgetProgress();
  }
  return true;
}

void TaskStore::RemoveTask(TaskId id, LocalFiles files) {
  const TaskPointer task = queue_->Remove(id);
  if (!task) {
    return;
  }
  task->Stop();
  bool idle = false;
  if (files == LocalFiles::Remove) {
    idle = task->ClearAtEnd(
        [task] {
          if (task->record->state != TransferState::Finished) {
            DeleteTarget(*task->record);
          }
        },
        false);
  }
  EndOrCut(task, idle);
  std::erase_if(leaving_, [](const auto& left) { return left.expired(); });
  if (task->record->keepAcrossRestart != 0 && task->Running()) {
    leaving_.push_back(task);
  }
  for (const auto& record : {task->record, task->childRecord}) {
    if (record) {
      ForgetRecord(record);
    }
  }
}

bool TaskStore::IsTargetInUse(const std::string& localPath) const {
  bool inUse = false;
  queue_->ForEachKept([&](const TransferTask& task) {
    const bool ended = task.record->state == TransferState::Finished && !task.Running();
    inUse = inUse || (!ended && Writes(task, localPath));
  });
  return inUse || std::any_of(leaving_.begin(), leaving_.end(), [&](const auto& left) {
           const TaskPointer task = left.lock();
           return task && task->Running() && Writes(*task, localPath);
         });
}

void TaskStore::Clear() {
  queue_->Clear();
  records_.clear();
  places_.clear();
  indexStale_ = true;
}

}  // namespace updown
