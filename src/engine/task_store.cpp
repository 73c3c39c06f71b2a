#include "engine/task_store.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "localdata/files.h"
#include "platform/text.h"

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

bool Writes(const TransferTask& task, std::string_view path) {
  const std::string target = task.record->LocalPath();
  return task.record->direction != 1 &&
         (target == path || target.starts_with(std::string(path) + "/") ||
          (task.isFolder && path.starts_with(target + "/")));
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
  records_.push_back(record);
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
  auto record = MakeRecord();
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
  AppendRecord(record);
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
  queue_->ForEach([&](const TransferTask& task) {
    if (!task.record || task.record->state == TransferState::Finished) {
      return;
    }
    const bool top = task.record->MoveRemotePath(oldPath, newPath);
    const bool child = task.childRecord && task.childRecord->MoveRemotePath(oldPath, newPath);
    if (top || child) {
      moved.push_back(task.id);
    }
  });
  indexStale_ = indexStale_ || !moved.empty();
  return moved;
}

bool TaskStore::StreamLimitReached() const {
  std::uint32_t unfinished = 0;
  queue_->ForEach([&unfinished](const TransferTask& task) {
    if (task.record && task.record->keepAcrossRestart != 0 &&
        task.record->state != TransferState::Finished) {
      ++unfinished;
    }
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
  for (const auto& record : topRecords) {
    TaskPointer task = MakeTask(record);
    if (task->isFolder) {
      const auto child = firstChildOf.find(record->recordId);
      task->childRecord = child == firstChildOf.end() ? MakeChild(*record) : child->second;
    }
    // Announced first, so that no news of its worker comes before.
    announce(task->id);
    queue_->Append(std::move(task));
  }
  return !topRecords.empty();
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
  }
}

void TaskStore::Resume(TaskId id) {
  if (const TaskPointer task = queue_->Find(id)) {
    QueueAgainWhenEnded(task, false);
  }
}

void TaskStore::Redo(TaskId id) {
  const TaskPointer task = queue_->Find(id);
  if (!task) {
    return;
  }
  task->Stop();
  Cut(*task);
  QueueAgainWhenEnded(task, true);
}

void TaskStore::QueueAgainWhenEnded(const TaskPointer& task, bool fromNothing) {
  task->WhenEnded([task, fromNothing, queue = queue_] {
    if (fromNothing) {
      DeleteTarget(*task->record);
      task->ForgetProgress();
    }
    task->QueueAgain();
    queue->MakeReady(task->id);
  });
}

void TaskStore::RemoveTask(TaskId id, LocalFiles files) {
  const TaskPointer task = queue_->Remove(id);
  if (!task) {
    return;
  }
  task->Stop();
  Cut(*task);
  std::erase_if(leaving_, [](const auto& left) { return left.expired(); });
  if (task->Running()) {
    leaving_.push_back(task);
  }
  // Also in the place of a Redo that waits for the same end.
  task->WhenEnded([task, files] {
    if (files == LocalFiles::Remove && task->record->state != TransferState::Finished) {
      DeleteTarget(*task->record);
    }
  });
  for (const auto& record : {task->record, task->childRecord}) {
    if (record) {
      Index().Remove(*record);
      std::erase(records_, record);
    }
  }
}

bool TaskStore::IsTargetInUse(const std::string& localPath) const {
  bool inUse = false;
  queue_->ForEach([&](const TransferTask& task) {
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
  indexStale_ = true;
}

}  // namespace updown
