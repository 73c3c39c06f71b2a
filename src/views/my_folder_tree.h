#pragma once

#include <QBasicTimer>
#include <QTreeWidget>

#include <string>
#include <vector>

#include "engine/frame_operations.h"
#include "platform/qt/message_target.h"
#include "service/operations.h"

namespace updown {

// The left pane: the root "/" and one item for each package. It reads the service's folders for
// all views: packages become items and rows of the list, a package's files rows of the form, and
// headers that the cache lacks become hidden downloads.
class CMyFolderTree : public QTreeWidget {
  Q_OBJECT

 public:
  explicit CMyFolderTree(FrameOperations& frame, QWidget* parent = nullptr);
  ~CMyFolderTree() override;

  WindowHandle Handle() const { return target_.Handle(); }
  void WireWindows(WindowHandle list, WindowHandle form, WindowHandle frame);

  // Once the handles are wired: makes the root and starts the first listing 100 ms later.
  void InitTree();

 private:
  MessageResult WindowProc(const WindowMessage& message);

  FrameOperations& frame_;
  WindowHandle listWindow_;
  WindowHandle frameWindow_;
  WindowHandle formWindow_;
  MessageTarget target_;
};

}  // namespace updown
