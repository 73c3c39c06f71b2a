#pragma once

#include <QDialog>

#include "engine/frame_operations.h"
#include "platform/qt/message_target.h"
#include "platform/ticks.h"

namespace updown {

// The window in which the user watches and steers downloads: modeless, top-level, made hidden at
// start, hidden by Escape and its close button, and destroyed only with the frame.
class CTransferStatusDlg : public QDialog {
  Q_OBJECT

 public:
  CTransferStatusDlg(FrameOperations& frame, const TickCounter& ticks);
  ~CTransferStatusDlg() override;

  WindowHandle Handle() const { return target_.Handle(); }
  void SetFrameWindow(WindowHandle frame);

  // The rest of the making: restores the stored tasks, then sets the list up.
  void InitDialog();

 private:
  MessageResult WindowProc(const WindowMessage& message);

  FrameOperations& frame_;
  const TickCounter& ticks_;
  WindowHandle frameWindow_;
  MessageTarget target_;
};

}  // namespace updown
