#include "engine/worker.h"

#include <cerrno>
#include <exception>
#include <new>

#include "engine/file_transfers.h"
#include "service/result_codes.h"

namespace updown {
namespace {

// The task fails, and the program goes on.
TransferResult RunGuarded(SchedulerContext& context, TransferTask& task, TaskRun& run) {
  try {
    return FileTransfers(context, task, run).Move(*task.record);
  } catch (const std::exception&) {
    task.record->SetStateUnlessStopped(TransferState::Failed);
    return ResultOfException();
  }
}

}  // namespace

TransferResult ResultOfException() {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    return {result::kNotEncodable, ENOMEM, {}};
  } catch (const std::exception&) {
    return {result::kNotEncodable, 0, {}};
  }
}

void EndTaskRun(SchedulerContext& context, TransferTask& task, TransferResult result) {
  // What somebody has stopped has not failed: the rest comes from the cut.
  if (task.record->state != TransferState::Failed) {
    result = {};
  }
  task.record->resultCode = result::WithoutSign(result.code);
  task.record->systemError = static_cast<std::uint32_t>(result.systemError);
  context.events->TaskEnded(task.id, result);
  const bool kept = task.record->keepAcrossRestart != 0;
  task.EndRun();
  context.queue->MakeReady(task.id);
  if (kept) {
    context.events->SaveNeeded();
  }
}

void RunTransferWorker(SchedulerContext& context, const TaskPointer& task) {
  if (const auto run = task->Run()) {
    EndTaskRun(context, *task, RunGuarded(context, *task, *run));
  }
}

}  // namespace updown
