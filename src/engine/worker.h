#pragma once

#include "engine/scheduler.h"
#include "service/operations.h"

namespace updown {

// Result of a folder task for which nobody lists any more, at the program's end.
inline constexpr int kListerGone = -2;

// Told after each block: keeps the pace (one block a second, cut short by the exit), then tells the
// task's BlockDone. Lives on its worker's thread.
class WorkerProgress : public TransferProgress {
 public:
  WorkerProgress(const SchedulerContext& context, TaskId task) : context_(context), task_(task) {}
  void BlockDone(TransferRecord& record) override;

 private:
  const SchedulerContext& context_;
  TaskId task_;
};

// Fetches the file that a folder task's child stands for, and takes its counts up into the folder
// record when it ended Finished. Worker thread.
int TransferChild(SchedulerContext& context, TransferTask& task, TransferProgress& progress);

}  // namespace updown
