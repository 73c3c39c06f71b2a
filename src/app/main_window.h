#pragma once

#include <QBasicTimer>
#include <QMainWindow>
#include <QSocketNotifier>
#include <QSplitter>
#include <memory>
#include <optional>

#include "app/desktop_notifications.h"
#include "app/downloads.h"
#include "app/help_window.h"
#include "app/task_list_keeper.h"
#include "app/window_actions.h"
#include "app/window_state.h"
#include "engine/engine_events.h"
#include "engine/scheduler.h"
#include "engine/session.h"
#include "packages/package_area.h"
#include "packages/package_commands.h"
#include "packages/package_form.h"
#include "packages/package_pane.h"
#include "packages/package_tree.h"
#include "platform/instance_event.h"
#include "platform/qt/main_thread.h"
#include "transfers/transfer_window.h"
#include "widgets/notice_bar.h"

namespace updown {

// The main window: three panes over the package area, and what stands behind them. It owns session,
// area, tasks and engine, ties the panes together, and passes on what the engine tells.
class MainWindow final : public QMainWindow, private EngineEvents {
  Q_OBJECT

 public:
  // Reads the stored tasks and what windows remember (a file that is waited for at most 300 ms),
  // makes panes and status window. The service is asked once the window has been shown. All three
  // outlive every thread of the engine, so the process if ShutDown gives false.
  MainWindow(const LaunchState& launch, FileService& service, InstanceEvent& instanceEvent);
  ~MainWindow() override;

  // The window's end, once: hides its windows, stores what is unfinished, and stops session and
  // engine. False if one of their threads could not be brought to an end in time; the process must
  // then end without destroying what the constructor was given.
  bool ShutDown();

  Downloads& AllDownloads() { return downloads_; }
  TaskStore& Tasks() { return downloads_.Tasks(); }
  PackageArea& Area() { return area_; }
  const PackageCache& Cache() const { return cache_; }
  NoticeBar& Notices() { return *notices_; }

 Q_SIGNALS:
  void Closed();  // the window has gone; what remains is ShutDown

 protected:
  void closeEvent(QCloseEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void timerEvent(QTimerEvent* event) override;

 private:
  void LoadStoredTasks();
  void ConnectEngine();
  void ConnectArea();
  void ConnectNotifications();
  void CreatePanes();
  void ConnectPanes();
  void ConnectActions();
  QList<QWidget*> Panes() const;  // those with a menu
  void LayOutPanes();
  void GoToTreeOrBack();
  void WatchForSecondStart();
  void Raise();
  void LeaveScreen();
  void ShowStatus();
  void ShowHelp();
  Session::Post PostToMain();

  void TaskStarted(TaskId task) noexcept override;
  void BlockDone(TaskId task) noexcept override;
  void TaskWaiting(TaskId task) noexcept override;
  void TaskEnded(TaskId task, const TransferResult& result) noexcept override;
  void SaveNeeded() noexcept override;
  void NotifyOfEnd(const TransferRecord& record, const TransferResult& result);
  void OnSavingChanged(int error);
  void ShowAddedTask(TaskId task);
  void ShowRestoredTask(TaskId task);
  void ShowMovedTask(TaskId task);
  template <typename News>
  void TellStatus(News news);

  const LaunchState& launch_;
  InstanceEvent& instanceEvent_;
  MainThread mainThread_;

  std::shared_ptr<SchedulerContext> context_;
  PackageCache cache_;
  Session session_;
  Downloads downloads_;
  PackageArea area_;
  PackageCommands commands_;
  std::unique_ptr<Scheduler> scheduler_;

  WindowActions actions_{*this};
  HelpWindow* help_ = nullptr;  // null until it is asked for
  NoticeBar* notices_ = nullptr;
  std::unique_ptr<QSplitter> outer_;  // tree, and beside it the inner one
  QSplitter* inner_ = nullptr;        // list above form; panes belong to their splitter
  PackageTree* tree_ = nullptr;
  PackagePane* packages_ = nullptr;
  PackageList* list_ = nullptr;  // inside it
  PackageForm* form_ = nullptr;
  std::unique_ptr<TransferWindow> statusWindow_;

  DesktopNotifications notifications_;
  QBasicTimer firstListing_;
  bool listedOnce_ = false;
  std::optional<QSocketNotifier> secondStart_;
  WindowState state_;
  bool restored_ = false;  // the panes have the sizes that they had at the last end
  bool onScreen_ = false;
  std::optional<bool> threadsEnded_;  // set by ShutDown
  TaskListKeeper keeper_;
};

}  // namespace updown
