#pragma once

#include <functional>
#include <string>

#include "engine/scheduler.h"

namespace updown {

// Result of a folder task whose listing failed; the frame has shown why.
inline constexpr int kListingFailed = -1;

// Fetches the file that the task's child stands for. 0, or a result code.
using ChildFetcher = std::function<int()>;

// Fetches what the folder record `task.record` stands for, file after file through
// `task.childRecord`. Worker thread; each listing is a kListFolder sent to the owner window.
// Returns 0, -1 after a failed listing (the frame has reported it), or the code of the file that
// failed. `relativeLocal` and `relativeRemote` end in "/" unless empty.
int FolderWalk(SchedulerContext& context, TransferTask& task, const ChildFetcher& fetchChild,
               const std::string& relativeLocal, const std::string& relativeRemote);

}  // namespace updown
