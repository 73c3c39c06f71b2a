#pragma once

#include <string>
#include <string_view>

#include "engine/scheduler.h"

namespace updown {

// True if a name that the service sent can stand as one component of a local path: not empty, not
// "." or "..", no separator and no NUL in it, and short enough for the buffers.
bool IsSafeName(std::string_view name);

// Fetches what the folder record `task.record` stands for, file after file through
// `task.childRecord`. Worker thread; each listing is asked of the context's session, and waited for.
// Returns 0, kListerGone, or the code of the listing or file that failed. `relativeLocal` and
// `relativeRemote` end in "/" unless empty.
int FolderWalk(SchedulerContext& context, TransferTask& task, TransferProgress& progress,
               const std::string& relativeLocal, const std::string& relativeRemote);

}  // namespace updown
