#pragma once

#include "engine/scheduler.h"
#include "service/operations.h"

namespace updown {

// Told after each block: keeps the pace (one block a second, cut short by the exit), then posts
// kBlockDone with the top record's id. Lives on its worker's thread.
class WorkerProgress : public TransferProgress {
 public:
  WorkerProgress(const SchedulerContext& context, WindowHandle owner)
      : context_(context), owner_(owner) {}
  void BlockDone(TransferRecord& record) override;

 private:
  const SchedulerContext& context_;
  WindowHandle owner_;
};
}  // namespace updown
