#pragma once

#include <functional>
#include <string>

#include "engine/scheduler.h"

namespace updown {

// Result of a folder task for which nobody lists any more, at the program's end.
inline constexpr int kListerGone = -2;

// Fetches the file that the task's child stands for. 0, or a result code.
using ChildFetcher = std::function<int()>;

// Fetches what the folder record `task.record` stands for, file after file through
// `task.childRecord`. Worker thread; each listing is asked of the context's session, and waited
// for. Returns 0, kListerGone, or the code of the listing or file that failed. `relativeLocal` and
// `relativeRemote` end in "/" unless empty.
int FolderWalk(SchedulerContext& context, TransferTask& task, const ChildFetcher& fetchChild,
               const std::string& relativeLocal, const std::string& relativeRemote);

}  // namespace updown
