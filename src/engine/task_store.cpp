#include "engine/task_store.h"

#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "platform/text.h"

namespace updown {
namespace {

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

TaskPointer TaskStore::AddDownload(const TaskDraft& draft, const std::string& localPath,
                                   bool keep) {
  if (draft.displayName.empty() || !FitsBuffer(draft.remotePath) || !FitsBuffer(localPath)) {
    return nullptr;
  }
  const auto record = MakeRecord();
  record->SetPaths({draft.remotePath, localPath});
  record->keepAcrossRestart = keep ? 1 : 0;
  AppendRecord(record);
  auto task = std::make_shared<TransferTask>();
  task->serverName = draft.serverName;
  task->serverPort = draft.serverPort;
  task->SetSessid(draft.sessid);
  task->record = record;
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

bool TaskStore::RestoreTasks(const std::string& sessid,
                             const std::function<void(TaskId)>& announce) {
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
    task->SetSessid(sessid);
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

void TaskStore::RemoveTask(TaskId id) {
  const TaskPointer task = queue_->Remove(id);
  if (!task) {
    return;
  }
  for (const auto& record : {task->record, task->childRecord}) {
    if (record) {
      // A worker that still runs ends at its next block; nobody else can tell it any more.
      record->ChangeState(TransferState::Queued, TransferState::Stopped);
      std::erase(records_, record);
    }
  }
  indexStale_ = true;
}

void TaskStore::Clear() {
  queue_->Clear();
  records_.clear();
  indexStale_ = true;
}

}  // namespace updown
