#pragma once

#include "engine/scheduler_context.h"

namespace updown {

// One task with a single file, whose run has begun, to EndRun on the calling worker thread. When
// memory or another resource runs out, the task ends Failed with result::kNotEncodable.
void RunTransferWorker(SchedulerContext& context, const TaskPointer& task);

// Tells how the task's run has ended, and ends it: TaskEnded before the run's end and SaveNeeded
// behind it. A result counts only for a task that is Failed.
void EndTaskRun(SchedulerContext& context, TransferTask& task, TransferResult result);

// What became of a worker in whose hands an exception came up: memory or another resource of this
// machine ran out. To be called while it is handled.
TransferResult ResultOfException();

}  // namespace updown
