#pragma once

#include <QWidget>
#include <optional>
#include <vector>

#include "resources/string_id.h"
#include "transfers/desktop.h"
#include "transfers/menu_rules.h"
#include "transfers/move_box.h"
#include "transfers/transfer_model.h"
#include "transfers/transfer_tasks.h"

namespace updown {

// What the commands do to selected transfers: each to those that allow it. Main thread only. The
// commands that ask wait for the user with `owner` in front; the rows may have changed by then, and
// `owner` and this object may be gone, in which case the command ends there.
class TransferCommands {
 public:
  TransferCommands(TransferTasks& tasks, TransferModel& model, Desktop desktop, QWidget* owner);

  // A command is offered if one of the transfers allows it.
  EnabledCommands Offered(const std::vector<TaskId>& selected) const;
  void Run(TransferCommand command, const std::vector<TaskId>& selected);

  void ClearFinished();
  void ResumeAllFailed();

 private:
  using Tasks = std::vector<TaskPointer>;

  Tasks Allowing(TransferCommand command, const std::vector<TaskId>& selected) const;
  void Pause(const Tasks& tasks);
  void Resume(const Tasks& tasks);
  void Redo(const Tasks& tasks);
  std::optional<StringId> RefusalOfRedo(const TransferTask& task) const;
  void Delete(const Tasks& tasks, const std::vector<TaskId>& rows);
  void Move(const Tasks& tasks);
  MoveEnd MoveOne(const TransferTask& task, const std::string& folder);
  bool Asked(const QString& question, StringId verb);

  TransferTasks& tasks_;
  TransferModel& model_;
  Desktop desktop_;
  QWidget* owner_;
};

}  // namespace updown
