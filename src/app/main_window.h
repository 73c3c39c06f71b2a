#pragma once

#include <QMainWindow>
#include <QSocketNotifier>
#include <memory>
#include <optional>

#include "app/downloads.h"
#include "app/task_list_keeper.h"
#include "app/window_requests.h"
#include "engine/engine_events.h"
#include "engine/scheduler.h"
#include "packages/my_file_list_form_view.h"
#include "packages/my_folder_tree.h"
#include "packages/my_form_view.h"
#include "platform/instance_event.h"
#include "platform/qt/main_thread.h"
#include "transfers/transfer_status_dlg.h"
#include "widgets/notice_bar.h"
#include "widgets/splitters.h"

namespace updown {

// The main window: the three panes and what stands behind them. It owns session, tasks and engine,
// ties the panes together, and passes on what the engine tells.
class MainWindow final : public QMainWindow, private EngineEvents {
  Q_OBJECT

 public:
  // Reads the stored tasks, opens the session (it may ask for a login, and waits for the service),
  // makes panes and status window and starts the scheduler. All three outlive every thread of the
  // engine, so the process if ShutDown gives false.
  MainWindow(const LaunchState& launch, FileService& service, InstanceEvent& instanceEvent);
  ~MainWindow() override;

  // The window's end, once: hides its windows, stores what is unfinished, and stops the engine.
  // False if a thread of the engine could not be brought to an end in time; the process must then
  // end without destroying what the constructor was given.
  bool ShutDown();

  Downloads& AllDownloads() { return downloads_; }
  TaskStore& Tasks() { return downloads_.Tasks(); }
  SharedSession& Session() { return session_; }
  const PackageCache& Cache() const { return cache_; }
  NoticeBar& Notices() { return *notices_; }

 Q_SIGNALS:
  void Closed();  // the window has gone; what remains is ShutDown

 protected:
  void closeEvent(QCloseEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  void LoadStoredTasks();
  void ConnectEngine();
  void MakeShortcuts();
  void CreatePanes();
  void ConnectPanes();
  void LayOutPanes();
  void GoToTreeOrBack();
  void WatchForSecondStart();
  void Raise();
  void ShowStatus();

  void TaskStarted(TaskId task) noexcept override;
  void BlockDone(TaskId task) noexcept override;
  void TaskEnded(TaskId task, const TransferResult& result) noexcept override;
  void SaveNeeded() noexcept override;
  void OnSavingChanged(int error);
  void ShowAddedTask(TaskId task);
  void ShowRestoredTask(TaskId task);
  template <typename News>
  void TellStatus(News news);

  const LaunchState& launch_;
  InstanceEvent& instanceEvent_;
  MainThread mainThread_;

  std::shared_ptr<SchedulerContext> context_;
  PackageCache cache_;
  SharedSession session_;
  WindowRequests requests_;
  Downloads downloads_;
  std::unique_ptr<Scheduler> scheduler_;

  NoticeBar* notices_ = nullptr;
  std::unique_ptr<CMySplitter> outer_;  // tree, and beside it the inner one
  CMySplitter* inner_ = nullptr;        // list above form; panes belong to their splitter
  CMyFolderTree* tree_ = nullptr;
  CMyFileListFormView* list_ = nullptr;
  CMyFormView* form_ = nullptr;
  std::unique_ptr<CTransferStatusDlg> statusWindow_;

  std::optional<QSocketNotifier> secondStart_;
  bool laidOut_ = false;
  std::optional<bool> threadsEnded_;  // set by ShutDown
  TaskListKeeper keeper_;
};

}  // namespace updown
