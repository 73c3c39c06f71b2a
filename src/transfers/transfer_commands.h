#pragma once

#include <QWidget>

#include "platform/ticks.h"
#include "resources/string_id.h"
#include "transfers/desktop.h"
#include "transfers/menu_rules.h"
#include "transfers/row_updates.h"
#include "transfers/transfer_model.h"
#include "transfers/transfer_tasks.h"

namespace updown {

// What the seven commands do to the task of a row. Main thread only. The commands that ask wait for
// the user with `owner` in front; the rows may have changed by then, and `owner` and this object
// may be gone, in which case the command ends there.
class TransferCommands {
 public:
  TransferCommands(TransferTasks& tasks, const TickCounter& ticks, TransferModel& model,
                   RowUpdates& rows, Desktop desktop, QWidget* owner);

  void Run(StatusCommand command, int row);

 private:
  void PauseTask(const TransferTask& task);
  void ResumeTask(const TransferTask& task);
  void RedoTask(const TaskPointer& task);
  void DeleteRow(int row);
  void OpenTaskFile(const TransferTask& task);
  void OpenTaskFolder(const TransferTask& task);
  void MoveTaskFile(const TaskPointer& task);

  bool Asked(StringId question);

  TransferTasks& tasks_;
  const TickCounter& ticks_;
  TransferModel& model_;
  RowUpdates& rows_;
  Desktop desktop_;
  QWidget* owner_;
};

}  // namespace updown
