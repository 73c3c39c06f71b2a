#pragma once

#include <QBasicTimer>
#include <QMainWindow>
#include <QSocketNotifier>
#include <memory>
#include <optional>

#include "app/save_throttle.h"
#include "engine/frame_operations.h"
#include "engine/scheduler.h"
#include "packages/my_file_list_form_view.h"
#include "packages/my_folder_tree.h"
#include "packages/my_form_view.h"
#include "platform/instance_event.h"
#include "platform/qt/message_target.h"
#include "transfers/transfer_status_dlg.h"
#include "widgets/splitters.h"

namespace updown {

// The main window, owner of tasks and records, and switchboard of the numbered messages. It is the
// only place where folder operations meet the shared session.
//
// Made in two steps: the constructor reads the stored tasks and opens the session (it may ask for a
// login, and waits for the service), LoadFrame makes panes and status window and starts the
// scheduler.
class CMainFrame final : public QMainWindow, public FrameOperations {
  Q_OBJECT

 public:
  // All three outlive every thread of the engine, so the process if ShutDown gives false.
  CMainFrame(const LaunchState& launch, FileService& service, InstanceEvent& instanceEvent);
  ~CMainFrame() override;

  void LoadFrame();

  // The frame's end, once: hides its windows, stores what is unfinished, and stops the engine.
  // False if a thread of the engine could not be brought to an end in time; the process must then
  // end without destroying what the constructor was given.
  bool ShutDown();

  CTransferStatusDlg* StatusWindow() const { return statusWindow_.get(); }

  WindowHandle FrameWindow() const override;
  void ReportResult(std::int64_t code) override;
  bool AddUserDownload(bool keep, const TaskDraft& draft) override;
  void AddCacheDownload(bool keep, const TaskDraft& draft) override;
  void RestoreTasks() override;
  void RemoveTask(TaskId task) override;
  TaskStore& Tasks() override { return tasks_; }
  SharedSession& Session() override { return session_; }
  const LaunchState& Launch() const override { return launch_; }
  const PackageCache& Cache() const override { return cache_; }

 Q_SIGNALS:
  void Closed();  // the window has gone; what remains is ShutDown

 protected:
  void closeEvent(QCloseEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void timerEvent(QTimerEvent* event) override;

 private:
  void LoadStoredTasks();
  void OnCreateClient();
  void WireWindows();
  void LayOutPanes();
  void GoToTreeOrBack();
  void WatchForSecondStart();
  void RaiseFrame();

  MessageResult WindowProc(const WindowMessage& message);
  MessageResult OnFolderMessage(const WindowMessage& message);
  void OnTaskResult(const WindowMessage& message);
  void OnTaskAdded(const WindowMessage& message);
  void DropFailedHeader(const TransferRecord& record);
  void ShowStatus();
  void ForwardToStatus(std::uint32_t number, const WindowMessage& message);
  bool IsDuplicateUserTask(const std::u16string& path);

  std::optional<std::string> AskForTarget(const std::string& displayName);
  void SaveTasks();
  void SaveAndPause();
  void RequestSave();
  void OnSavePause();

  const LaunchState& launch_;
  FileService& service_;
  InstanceEvent& instanceEvent_;

  std::shared_ptr<SchedulerContext> context_;
  TaskStore tasks_;
  PackageCache cache_;
  SharedSession session_;
  std::optional<MessageTarget> target_;
  std::unique_ptr<Scheduler> scheduler_;

  std::unique_ptr<CMySplitter> outer_;  // tree, and beside it the inner one
  CMySplitter* inner_ = nullptr;        // list above form; panes belong to their splitter
  CMyFolderTree* tree_ = nullptr;
  CMyFileListFormView* list_ = nullptr;
  CMyFormView* form_ = nullptr;
  std::unique_ptr<CTransferStatusDlg> statusWindow_;

  std::optional<QSocketNotifier> secondStart_;
  QBasicTimer saveTimer_;
  SaveThrottle saveThrottle_;
  QString saveFolder_;  // where the last target was chosen
  bool laidOut_ = false;
  std::optional<bool> threadsEnded_;  // set by ShutDown
};

}  // namespace updown
