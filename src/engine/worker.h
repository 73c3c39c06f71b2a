#pragma once

#include "engine/scheduler.h"
#include "service/operations.h"

namespace updown {

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
}  // namespace updown
