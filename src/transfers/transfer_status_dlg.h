#pragma once

#include <QAction>
#include <QDialog>
#include <QMenu>
#include <array>

#include "engine/frame_operations.h"
#include "platform/qt/message_target.h"
#include "platform/ticks.h"
#include "transfers/desktop.h"
#include "transfers/menu_rules.h"
#include "transfers/row_updates.h"
#include "transfers/transfer_commands.h"
#include "transfers/transfer_model.h"
#include "widgets/list_ctrl_ex.h"

namespace updown {

// The window in which the user watches and steers downloads: modeless, top-level, made hidden at
// start, hidden by Escape and its close button, and destroyed only with the frame.
class CTransferStatusDlg : public QDialog {
  Q_OBJECT

 public:
  CTransferStatusDlg(FrameOperations& frame, const TickCounter& ticks,
                     Desktop desktop = SystemDesktop());
  ~CTransferStatusDlg() override;

  WindowHandle Handle() const { return target_.Handle(); }
  void SetFrameWindow(WindowHandle frame);

  // The rest of the making: restores the stored tasks, then sets the list up.
  void InitDialog();

 private:
  MessageResult WindowProc(const WindowMessage& message);
  void InitList();
  void InitMenu();
  void RunCommand(StatusCommand command);
  void OpenMenu(int row, const QPoint& globalPosition);

  FrameOperations& frame_;
  TransferModel model_;
  RowUpdates rows_;
  TransferCommands commands_;
  CListCtrlEx* list_;  // owned by the window, as all widgets
  QMenu* menu_;
  std::array<QAction*, kStatusCommands> actions_{};
  MessageTarget target_;
};

}  // namespace updown
