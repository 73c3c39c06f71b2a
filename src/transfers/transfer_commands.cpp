#include "transfers/transfer_commands.h"

#include <QPointer>
#include <utility>

#include "platform/qt/text.h"
#include "resources/qt/texts.h"
#include "transfers/local_files.h"
#include "transfers/move_box.h"
#include "transfers/rate_statistics.h"
#include "widgets/busy_pointer.h"
#include "widgets/message_boxes.h"

namespace updown {
namespace {

// The task's file or folder goes from the disk. Of an upload the target end is a path on the
// service, which names nothing here.
void DeleteTarget(const TransferRecord& record) {
  if (record.direction != 1) {
    const BusyPointer busy;
    DeleteLocal(record.LocalPath());
  }
}

// A stop has to reach the worker wherever it is between the two records of a folder task.
void StopRecords(const TransferTask& task) {
  if (task.record->ChangeState(TransferState::Queued, TransferState::Stopped) &&
      task.record->isFolder != 0 && task.childRecord) {
    task.childRecord->state = TransferState::Stopped;
  }
}

}  // namespace

TransferCommands::TransferCommands(TransferTasks& tasks, const TickCounter& ticks,
                                   TransferModel& model, RowUpdates& rows, Desktop desktop,
                                   QWidget* owner)
    : tasks_(tasks),
      ticks_(ticks),
      model_(model),
      rows_(rows),
      desktop_(std::move(desktop)),
      owner_(owner) {}

void TransferCommands::Run(StatusCommand command, int row) {
  const TaskPointer task = model_.TaskAt(row);
  if (!task && command != StatusCommand::Delete) {
    return;
  }
  switch (command) {
    case StatusCommand::Pause:
      return PauseTask(*task);
    case StatusCommand::Resume:
      return ResumeTask(*task);
    case StatusCommand::Redo:
      return RedoTask(task);
    case StatusCommand::Delete:
      return DeleteRow(row);
    case StatusCommand::OpenFile:
      return OpenTaskFile(*task);
    case StatusCommand::OpenFolder:
      return OpenTaskFolder(*task);
    case StatusCommand::MoveFile:
      return MoveTaskFile(task);
  }
}

// The worker sees the state at its next block, and its end comes back as an announcement.
void TransferCommands::PauseTask(const TransferTask& task) {
  StopRecords(task);
  model_.Touch(model_.RowOfTask(task.id));
  // A pause that a kill undid would surprise.
  tasks_.TasksChanged();
}

void TransferCommands::ResumeTask(TransferTask& task) {
  task.SetSessid(tasks_.Sessid());
  task.lastResult = 0;
  task.record->statistics.lastSampleTick = ticks_.Now();
  if (task.record->isFolder != 0 && task.childRecord) {
    task.childRecord->state = TransferState::Queued;
  }
  task.record->state = TransferState::Queued;
  task.ClearRunning();
  model_.Touch(model_.RowOfTask(task.id));
  tasks_.WakeScheduler();
}

void TransferCommands::RedoTask(const TaskPointer& task) {
  if (!Asked(StringId::ConfirmRedo)) {
    return;
  }
  if (task->record->state == TransferState::Finished && tasks_.StreamLimitReached()) {
    ShowNotice(owner_, StringId::StreamLimit);
    return;
  }
  const int row = model_.RowOfTask(task->id);
  if (row < 0) {
    return;
  }
  StartAgain(*task);
  rows_.ClearProgress(row);
  model_.Touch(row);
  tasks_.WakeScheduler();
}

// The old file goes and the counts are 0 before the task is runnable again: any other task's end
// makes the scheduler look, and a new worker's file must not be the one that is removed.
void TransferCommands::StartAgain(TransferTask& task) {
  TransferRecord& record = *task.record;
  DeleteTarget(record);
  task.SetSessid(tasks_.Sessid());
  task.lastResult = 0;
  record.totalBytes = 0;
  record.doneBytes = 0;
  record.remoteTime = 0;
  RestartStatistics(record, ticks_.Now());
  if (record.isFolder != 0 && task.childRecord) {
    TransferRecord& child = *task.childRecord;
    child.totalBytes = 0;
    child.doneBytes = 0;
    child.remoteTime = 0;
    child.state = TransferState::Queued;
  }
  record.state = TransferState::Queued;
  task.ClearRunning();
}

void TransferCommands::DeleteRow(int row) {
  const TaskPointer task = model_.TaskAt(row);
  if (!task) {
    model_.Remove(row);
    return;
  }
  if (!Asked(StringId::ConfirmDelete)) {
    return;
  }
  StopRecords(*task);
  // A file that has arrived whole, perhaps while the question stood, is the user's.
  if (task->record->state != TransferState::Finished) {
    DeleteTarget(*task->record);
  }
  model_.Remove(model_.RowOfTask(task->id));
  tasks_.RemoveTask(task->id);
}

void TransferCommands::OpenTaskFile(const TransferTask& task) {
  desktop_.openFile(FromUtf8(task.record->LocalPath()));
}

void TransferCommands::OpenTaskFolder(const TransferTask& task) {
  desktop_.showInFolder(FromUtf8(task.record->LocalPath()));
}

void TransferCommands::MoveTaskFile(const TaskPointer& task) {
  const std::string path = task->record->LocalPath();
  if (path.empty()) {
    return;
  }
  const QPointer<QWidget> alive(owner_);
  const QString folder = desktop_.askFolder(owner_, Text(StringId::MoveFile));
  if (!alive || folder.isEmpty()) {
    return;
  }
  const auto moved = MoveInBox(owner_, path, ToUtf8(folder));
  if (!alive) {
    return;
  }
  const int row = model_.RowOfTask(task->id);
  if (!moved || row < 0) {
    return;
  }
  task->record->SetLocalPath(*moved);
  const bool upload = task->record->direction == 1;
  model_.SetText(row, upload ? StatusColumn::SourceEnd : StatusColumn::TargetEnd, FromUtf8(*moved));
}

// False also if the window, and this object with it, went while the question stood.
bool TransferCommands::Asked(StringId question) {
  const QPointer<QWidget> alive(owner_);
  return Confirm(owner_, question) && alive;
}

}  // namespace updown
