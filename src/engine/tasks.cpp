#include "engine/tasks.h"

#include <new>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "engine/frame_messages.h"
#include "platform/text.h"

namespace updown {
namespace {

bool FitsBuffer(std::string_view path) { return path.size() < kPathCapacity; }

}  // namespace

TaskStore::TaskStore(std::shared_ptr<TaskQueue> queue, const LaunchState& launch)
    : queue_(std::move(queue)), launch_(launch) {}

RecordChain& TaskStore::Records() {
  indexStale_ = true;
  return recordChain_;
}

RecordIndex& TaskStore::Index() const {
  if (indexStale_) {
    index_.Rebuild(recordChain_);
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
  recordChain_.Append(record);
}

std::shared_ptr<TransferRecord> TaskStore::CreateRecord() {
  auto record = MakeRecord();
  AppendRecord(record);
  return record;
}

TaskPointer TaskStore::CreateTask() {
  auto task = std::make_shared<TransferTask>();
  task->record = CreateRecord();
  queue_->Append(task);
  return task;
}

TaskPointer TaskStore::AddDownload(const TaskDraft& draft, const std::string& localPath, bool keep,
                                   WindowHandle owner) {
  if (draft.displayName.empty() || !FitsBuffer(draft.remotePath) || !FitsBuffer(localPath)) {
    return nullptr;
  }
  std::shared_ptr<TransferRecord> record;
  try {
    record = MakeRecord();
    record->SetPaths({draft.remotePath, localPath});
    record->keepAcrossRestart = keep ? 1 : 0;
    AppendRecord(record);
    auto task = std::make_shared<TransferTask>();
    task->ownerWindow = owner;
    task->serverName = draft.serverName;
    task->serverPort = draft.serverPort;
    task->SetSessid(draft.sessid);
    task->record = record;
    // Last of all: from here on the scheduler may run it.
    queue_->Append(task);
    return task;
  } catch (const std::bad_alloc&) {
    recordChain_.Remove(record.get());
    indexStale_ = true;
    return nullptr;
  }
}

bool TaskStore::IsDuplicate(std::u16string_view wantedPath, DuplicateScope scope) const {
  return wantedPath.empty() ||
         Index().Meets(WideToUtf8(wantedPath), scope == DuplicateScope::QueuedOnly);
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

bool TaskStore::RestoreTasks(const std::string& sessid, WindowHandle owner) {
  if (!queue_->Empty() || recordChain_.Empty()) {
    return false;
  }
  RenumberRecords();
  std::vector<std::shared_ptr<TransferRecord>> topRecords;
  std::unordered_map<std::uint32_t, std::shared_ptr<TransferRecord>> firstChildOf;
  for (auto link = recordChain_.Head(); link; link = link->next) {
    if (link->parentRecordId == 0) {
      topRecords.push_back(link);
    } else {
      firstChildOf.try_emplace(link->parentRecordId, link);
    }
  }
  for (const auto& record : topRecords) {
    const auto child = firstChildOf.find(record->recordId);
    RestoreTask(record, child == firstChildOf.end() ? nullptr : child->second, sessid, owner);
  }
  return !topRecords.empty();
}

void TaskStore::RestoreTask(const std::shared_ptr<TransferRecord>& record,
                            const std::shared_ptr<TransferRecord>& child, const std::string& sessid,
                            WindowHandle owner) {
  auto task = std::make_shared<TransferTask>();
  task->id = NewTaskId();
  task->record = record;
  task->ownerWindow = owner;
  task->serverName = launch_.serverName;
  task->serverPort = launch_.serverPort;
  task->SetSessid(sessid);
  task->isFolder = record->isFolder != 0;
  if (task->isFolder) {
    task->childRecord = child;
    if (!child) {
      task->childRecord = MakeRecord();
      task->childRecord->parentRecordId = record->recordId;
      task->childRecord->direction = record->direction;
      task->childRecord->keepAcrossRestart = record->keepAcrossRestart;
      task->childRecord->state = record->state.load();
      AppendRecord(task->childRecord);
    }
  }
  // Announced first, so that no message of its worker comes before.
  PostWindowMessage(owner, frame_message::kTaskAdded, task->id, 0);
  queue_->Append(std::move(task));
}

// Only a damaged list brings a number twice or 0. Two tasks would then share one row's messages,
// or two workers one child.
void TaskStore::RenumberRecords() {
  std::unordered_set<std::uint32_t> seen;
  for (TransferRecord& record : recordChain_) {
    if (record.recordId == 0 || !seen.insert(record.recordId).second) {
      record.recordId = NextRecordId();
      seen.insert(record.recordId);
      index_.Add(record);
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
      recordChain_.Remove(record.get());
    }
  }
  indexStale_ = true;
}

}  // namespace updown
