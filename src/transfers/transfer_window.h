#pragma once

#include <QAction>
#include <QDialog>
#include <QLabel>
#include <QSortFilterProxyModel>
#include <QTimer>
#include <array>
#include <vector>

#include "engine/engine_events.h"
#include "platform/ticks.h"
#include "transfers/desktop.h"
#include "transfers/menu_rules.h"
#include "transfers/transfer_commands.h"
#include "transfers/transfer_model.h"
#include "transfers/transfer_tasks.h"
#include "widgets/row_list_view.h"

namespace updown {

// The window in which the user watches and steers downloads: modeless, top-level, made hidden at
// start, hidden by Escape, Ctrl+W and its close button, and destroyed only with the main window.
class TransferWindow : public QDialog {
  Q_OBJECT

 public:
  // What it is given outlives it.
  TransferWindow(TransferTasks& tasks, const TickCounter& ticks, Desktop desktop = SystemDesktop());
  ~TransferWindow() override;

  // Shows it in front of the others, with the keyboard.
  void BringForward();

  // News about a task that is gone, or that has no row, do nothing.
  void AddRow(TaskId task) { model_.Add(tasks_.Find(task)); }
  void ShowPaths(TaskId task) { model_.ShowPaths(task); }
  void ShowStarted(TaskId task) { model_.ShowStarted(task); }
  void ShowBlock(TaskId task) { model_.ShowBlock(task); }
  void ShowWaiting(TaskId task) { model_.ShowReconnecting(task); }
  void ShowEnded(TaskId task, const TransferResult& result) { model_.ShowEnded(task, result); }

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void MakeList();
  void MakeActions();
  QAction* MakeAction(StringId text, const char* name);
  void SizeColumns();
  std::vector<TaskId> Selected() const;
  void UpdateSoon();
  void UpdateTotals();
  void UpdateActions();

  TransferTasks& tasks_;
  TransferModel model_;
  QSortFilterProxyModel sorted_;
  TransferCommands commands_;
  RowListView* list_;  // owned by the window, as all widgets
  QLabel* totals_;
  QTimer updateTimer_;  // once for each turn of the event loop
  std::array<QAction*, kTransferCommands> actions_{};
  QAction* separator_ = nullptr;
  QAction* clearFinished_ = nullptr;
  QAction* resumeFailed_ = nullptr;
};

}  // namespace updown
