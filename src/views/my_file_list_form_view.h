#pragma once

#include <QWidget>

#include "engine/frame_operations.h"
#include "platform/qt/message_target.h"

namespace updown {

// The upper right pane: one row for each package, with what its header files in the cache say.
class CMyFileListFormView : public QWidget {
  Q_OBJECT

 public:
  explicit CMyFileListFormView(FrameOperations& frame, QWidget* parent = nullptr);
  ~CMyFileListFormView() override;

  WindowHandle Handle() const { return target_.Handle(); }
  void WireWindows(WindowHandle tree, WindowHandle frame, WindowHandle form);

  void InitList();

  // Reads again what the rows without a sender show; called when a header file has arrived.
  void RefreshHeaderlessRows();

  // Gives the list the keyboard.
  void FocusList();

 private:
  MessageResult WindowProc(const WindowMessage& message);

  FrameOperations& frame_;
  WindowHandle treeWindow_;
  WindowHandle frameWindow_;
  WindowHandle formWindow_;
  MessageTarget target_;
};

}  // namespace updown
