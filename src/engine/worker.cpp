#include <cerrno>
#include <exception>
#include <new>

#include "engine/file_transfers.h"
#include "engine/folder_walk.h"
#include "service/result_codes.h"

namespace updown {
namespace {

TransferResult Fail(TransferTask& task, int error) {
  task.record->SetStateUnlessStopped(TransferState::Failed);
  return {result::kNotEncodable, error, {}};
}

// Memory or another resource of this machine ran out: the task fails, and the program goes on.
TransferResult RunGuarded(SchedulerContext& context, TransferTask& task, TaskRun& run) {
  try {
    FileTransfers transfers(context, task, run);
    return task.isFolder && task.childRecord ? RunFolderTask(task, transfers)
                                             : transfers.Move(*task.record);
  } catch (const std::bad_alloc&) {
    return Fail(task, ENOMEM);
  } catch (const std::exception&) {
    return Fail(task, 0);
  }
}

}  // namespace

int RunTransferWorker(SchedulerContext& context, const TaskPointer& task) {
  const std::shared_ptr<TaskRun> run = task ? task->Run() : nullptr;
  if (!run || !task->record) {
    return 1;
  }
  TransferResult result = RunGuarded(context, *task, *run);
  // What somebody has stopped has not failed: the rest comes from the cut.
  if (task->record->state != TransferState::Failed) {
    result = {};
  }
  task->record->resultCode = result::WithoutSign(result.code);
  task->record->systemError = static_cast<std::uint32_t>(result.systemError);
  context.events->TaskEnded(task->id, result);
  const bool kept = task->record->keepAcrossRestart != 0;
  task->EndRun();
  if (kept) {
    context.events->SaveNeeded();
  }
  return result.code;
}

}  // namespace updown
