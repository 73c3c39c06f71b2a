#pragma once

#include "platform/window.h"

namespace updown {

// Gives a QWidget's class its window handle: a member of the window, made with a procedure that
// calls the window's WindowProc. The handle is gone when the member is. Main thread only; messages
// come through Qt's event loop, also inside the loop of a dialog.
class MessageTarget {
 public:
  explicit MessageTarget(WindowProcedure procedure);
  ~MessageTarget();
  MessageTarget(const MessageTarget&) = delete;
  MessageTarget& operator=(const MessageTarget&) = delete;

  WindowHandle Handle() const { return handle_; }

 private:
  WindowHandle handle_;
};

}  // namespace updown
