#include "transfers/transfer_commands.h"

#include <QPointer>
#include <utility>

#include "platform/qt/text.h"
#include "resources/qt/texts.h"
#include "transfers/move_box.h"
#include "transfers/rate_statistics.h"
#include "widgets/busy_pointer.h"
#include "widgets/message_boxes.h"

namespace updown {
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

void TransferCommands::PauseTask(const TransferTask& task) {
  tasks_.PauseTask(task.id);
  model_.Touch(model_.RowOfTask(task.id));
}

void TransferCommands::ResumeTask(const TransferTask& task) {
  task.record->statistics.lastSampleTick = ticks_.Now();
  tasks_.ResumeTask(task.id);
  rows_.ShowQueued(task.id);
}

void TransferCommands::RedoTask(const TaskPointer& task) {
  if (!Asked(StringId::ConfirmRedo) || model_.RowOfTask(task->id) < 0) {
    return;
  }
  const bool finished = task->record->state == TransferState::Finished;
  if (finished && tasks_.StreamLimitReached()) {
    ShowNotice(owner_, StringId::StreamLimit);
    return;
  }
  if (finished && tasks_.IsTargetInUse(task->record->LocalPath())) {
    ShowNotice(owner_, StringId::DuplicateTask);
    return;
  }
  const BusyPointer busy;
  RestartStatistics(*task->record, ticks_.Now());
  tasks_.RedoTask(task->id);
  rows_.ClearProgress(model_.RowOfTask(task->id));
  rows_.ShowQueued(task->id);
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
  const BusyPointer busy;
  model_.Remove(model_.RowOfTask(task->id));
  tasks_.DeleteTask(task->id);
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
