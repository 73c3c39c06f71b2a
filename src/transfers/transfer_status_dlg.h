#pragma once

#include <QAction>
#include <QDialog>
#include <QMenu>
#include <array>

#include "engine/engine_events.h"
#include "platform/ticks.h"
#include "transfers/desktop.h"
#include "transfers/menu_rules.h"
#include "transfers/row_updates.h"
#include "transfers/transfer_commands.h"
#include "transfers/transfer_model.h"
#include "transfers/transfer_tasks.h"
#include "widgets/list_ctrl_ex.h"

namespace updown {

// The window in which the user watches and steers downloads: modeless, top-level, made hidden at
// start, hidden by Escape and its close button, and destroyed only with the main window.
class CTransferStatusDlg : public QDialog {
  Q_OBJECT

 public:
  // What it is given outlives it.
  CTransferStatusDlg(TransferTasks& tasks, const TickCounter& ticks,
                     Desktop desktop = SystemDesktop());
  ~CTransferStatusDlg() override;

  // News about a task that is gone, or that has no row, do nothing.
  void AddRow(TaskId task);
  void ShowPaths(TaskId task);
  void ShowStarted(TaskId task);
  void ShowBlock(TaskId task);
  void ShowWaiting(TaskId task);
  void ShowEnded(TaskId task, const TransferResult& result);

 private:
  void InitList();
  void InitMenu();
  void RunCommand(StatusCommand command);
  void OpenMenu(int row, const QPoint& globalPosition);

  TransferTasks& tasks_;
  TransferModel model_;
  RowUpdates rows_;
  TransferCommands commands_;
  CListCtrlEx* list_;  // owned by the window, as all widgets
  QMenu* menu_;
  std::array<QAction*, kStatusCommands> actions_{};
};

}  // namespace updown
