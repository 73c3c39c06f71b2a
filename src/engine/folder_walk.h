#pragma once

#include <string>

#include "engine/scheduler.h"

namespace updown {

// Fetches what the folder record `task.record` stands for, file after file through
// `task.childRecord`. Worker thread; each listing is a kListFolder sent to the owner window.
// Returns 0, -1 after a failed listing (the frame has reported it), or the code of the file that
// failed. `relativeLocal` and `relativeRemote` end in "/" unless empty.
int FolderWalk(SchedulerContext& context, TransferTask& task, TransferProgress& progress,
               const std::string& relativeLocal, const std::string& relativeRemote);

}  // namespace updown
