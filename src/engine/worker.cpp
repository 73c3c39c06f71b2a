#include "engine/worker.h"

#include <exception>

#include "engine/folder_walk.h"
#include "engine/frame_messages.h"
#include "platform/folders.h"
#include "service/transfer.h"

namespace updown {
namespace {

int Transfer(SchedulerContext& context, const TransferTask& task, TransferRecord& record,
             TransferProgress& progress) {
  return RunTaskTransfer(*context.service, task.serverName,
                         static_cast<std::uint16_t>(task.serverPort), task.Sessid(), record,
                         &progress, &context.connections)
      .code;
}

// A child without a path has never stood for a file; a stopped one may have all of its file.
bool ChildIsOutstanding(const TransferRecord& child) {
  const bool complete =
      child.state == TransferState::Stopped && child.totalBytes == child.doneBytes;
  return !complete && !child.RemotePath().empty();
}

void SetFolderOutcome(TransferTask& task, int outcome) {
  const auto state = outcome == result::kOk ? TransferState::Finished : TransferState::Failed;
  if (task.record->SetStateUnlessStopped(state)) {
    task.childRecord->state = state;
  }
}

int RunFolderTask(SchedulerContext& context, TransferTask& task, TransferProgress& progress) {
  int outcome = result::kOk;
  if (ChildIsOutstanding(*task.childRecord)) {
    outcome = TransferChild(context, task, progress);
  }
  if (outcome != result::kOk) {
    // The task stays Queued and the next pass takes it up again, at the pace of a block.
    context.workersStop.WaitFor(context.pace);
    return outcome;
  }
  if (task.record->state == TransferState::Stopped) {
    return outcome;
  }
  MakeFolder(task.record->LocalPath());
  outcome = FolderWalk(context, task, progress, "", "");
  // A frame that has gone could not list: the task is not Failed for that and runs at next start.
  if (outcome != kListingFailed || IsWindow(task.ownerWindow)) {
    SetFolderOutcome(task, outcome);
  }
  return outcome;
}

// Memory or another resource of this machine ran out: the task fails, and the program goes on.
int RunGuarded(SchedulerContext& context, TransferTask& task) {
  try {
    WorkerProgress progress(context, task.ownerWindow);
    return task.isFolder && task.childRecord ? RunFolderTask(context, task, progress)
                                             : Transfer(context, task, *task.record, progress);
  } catch (const std::exception&) {
    task.record->SetStateUnlessStopped(TransferState::Failed);
    return result::kNotEncodable;
  }
}

}  // namespace

void PostToFrame(WindowHandle frame, std::uint32_t number, WideParam wParam,
                 LongParam lParam) noexcept {
  try {
    PostWindowMessage(frame, number, wParam, lParam);
  } catch (const std::exception&) {
    return;
  }
}

void WorkerProgress::BlockDone(TransferRecord& record) {
  context_.workersStop.WaitFor(context_.pace);
  const std::uint32_t topRecord =
      record.parentRecordId != 0 ? record.parentRecordId : record.recordId;
  PostToFrame(owner_, frame_message::kBlockDone, topRecord, 0);
}

int TransferChild(SchedulerContext& context, TransferTask& task, TransferProgress& progress) {
  const int outcome = Transfer(context, task, *task.childRecord, progress);
  if (task.childRecord->state == TransferState::Finished) {
    task.TakeUpChild();
  }
  return outcome;
}

int RunTransferWorker(SchedulerContext& context, const TaskPointer& task, std::uint32_t run) {
  if (!task || !task->record) {
    return 1;
  }
  const int outcome = RunGuarded(context, *task);
  PostToFrame(task->ownerWindow, frame_message::kTaskResult, task->id, outcome);
  PostToFrame(task->ownerWindow, frame_message::kSaveTaskList, 0, 0);
  task->EndRun(run);
  return outcome;
}

}  // namespace updown
