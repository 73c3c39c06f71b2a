#include "engine/worker.h"

#include <exception>

#include "engine/folder_walk.h"
#include "platform/folders.h"
#include "service/result_codes.h"
#include "service/transfer.h"

namespace updown {
namespace {

int Transfer(SchedulerContext& context, const TransferTask& task, TransferRecord& record,
             TransferProgress& progress) {
  const SessionKey key = context.session->Key();
  const int code = RunTaskTransfer(*context.service, task.serverName,
                                   static_cast<std::uint16_t>(task.serverPort), key.sessid, record,
                                   &progress, &context.connections)
                       .code;
  if (code == result::kAuthentication) {
    // For what starts from now on: this one waits for the user's Resume.
    context.session->Renew(key, {});
  }
  return code;
}

// Takes the counts of a child that ended Finished up into the folder record.
int TransferChild(SchedulerContext& context, TransferTask& task, TransferProgress& progress) {
  const int outcome = Transfer(context, task, *task.childRecord, progress);
  if (task.childRecord->state == TransferState::Finished) {
    task.TakeUpChild();
  }
  return outcome;
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
  const ChildFetcher fetchChild = [&] { return TransferChild(context, task, progress); };
  int outcome = result::kOk;
  if (ChildIsOutstanding(*task.childRecord)) {
    outcome = fetchChild();
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
  outcome = FolderWalk(context, task, fetchChild, "", "");
  // Without a listing at the program's end the task is not Failed and runs at next start.
  if (outcome != kListerGone) {
    SetFolderOutcome(task, outcome);
  }
  return outcome;
}

// Memory or another resource of this machine ran out: the task fails, and the program goes on.
int RunGuarded(SchedulerContext& context, TransferTask& task) {
  try {
    WorkerProgress progress(context, task.id);
    return task.isFolder && task.childRecord ? RunFolderTask(context, task, progress)
                                             : Transfer(context, task, *task.record, progress);
  } catch (const std::exception&) {
    task.record->SetStateUnlessStopped(TransferState::Failed);
    return result::kNotEncodable;
  }
}

}  // namespace

void WorkerProgress::BlockDone(TransferRecord& record) {
  context_.workersStop.WaitFor(context_.pace);
  if (record.keepAcrossRestart != 0) {  // else no row shows it, and no list stores it
    context_.events->BlockDone(task_);
  }
}

int RunTransferWorker(SchedulerContext& context, const TaskPointer& task) {
  if (!task || !task->record) {
    return 1;
  }
  const int outcome = RunGuarded(context, *task);
  task->record->resultCode = result::WithoutSign(outcome);
  context.events->TaskEnded(task->id, {outcome, 0, {}});
  if (task->record->keepAcrossRestart != 0) {
    context.events->SaveNeeded();
  }
  task->EndRun();
  return outcome;
}

}  // namespace updown
