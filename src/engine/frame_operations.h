#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "engine/cache.h"
#include "engine/launch_state.h"
#include "engine/session.h"
#include "engine/task_store.h"

namespace updown {

// What views and status window may call on the frame directly, beside its messages. Main thread
// only; the frame outlives its panes and clears the status window's reference when it goes.
class FrameOperations {
 public:
  virtual ~FrameOperations() = default;

  virtual WindowHandle FrameWindow() const = 0;

  // Shows "text[code]" in a box and waits for the user; `code` is a string id or a result code of
  // either sign; 0 shows nothing.
  virtual void ReportResult(std::int64_t code) = 0;

  // Asks for the target and makes the task; true if there is one.
  virtual bool AddUserDownload(bool keep, const TaskDraft& draft) = 0;
  // Fetches into the package cache, without a row in the status window.
  virtual void AddCacheDownload(bool keep, const TaskDraft& draft) = 0;
  virtual void RestoreTasks() = 0;
  virtual void RemoveTask(TaskId task) = 0;

  virtual TaskStore& Tasks() = 0;
  virtual SharedSession& Session() = 0;
  virtual const LaunchState& Launch() const = 0;
  virtual const PackageCache& Cache() const = 0;
};

// A fetch in the frame's own session.
inline TaskDraft DraftOf(FrameOperations& frame, std::string displayName, std::string remotePath) {
  return {std::move(displayName), std::move(remotePath), frame.Session().Sessid(),
          frame.Launch().serverName, frame.Launch().serverPort};
}

}  // namespace updown
