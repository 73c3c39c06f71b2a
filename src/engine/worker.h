#pragma once

#include "engine/scheduler.h"
#include "service/operations.h"

namespace updown {

// Result of a folder task whose listing failed; the frame has shown why.
inline constexpr int kListingFailed = -1;

// Posts to the frame. A message for which there is no memory is dropped.
void PostToFrame(WindowHandle frame, std::uint32_t number, WideParam wParam,
                 LongParam lParam) noexcept;

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

// Fetches the file that a folder task's child stands for, and takes its counts up into the folder
// record when it ended Finished. Worker thread.
int TransferChild(SchedulerContext& context, TransferTask& task, TransferProgress& progress);

}  // namespace updown
