#pragma once

#include <QWidget>

#include "engine/frame_operations.h"
#include "platform/qt/message_target.h"

namespace updown {

// The lower right pane: header, notes and, for a complete package, the attachments of the package
// that is selected in the list.
class CMyFormView : public QWidget {
  Q_OBJECT

 public:
  explicit CMyFormView(FrameOperations& frame, QWidget* parent = nullptr);
  ~CMyFormView() override;

  WindowHandle Handle() const { return target_.Handle(); }
  void WireWindows(WindowHandle frame);

  void InitForm();

 private:
  MessageResult WindowProc(const WindowMessage& message);

  FrameOperations& frame_;
  WindowHandle frameWindow_;
  MessageTarget target_;
};

}  // namespace updown
