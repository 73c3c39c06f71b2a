#pragma once

#include <QWidget>
#include <string_view>

#include "engine/frame_operations.h"
#include "platform/ticks.h"
#include "resources/string_id.h"
#include "transfers/desktop.h"
#include "transfers/menu_rules.h"
#include "transfers/row_updates.h"
#include "transfers/transfer_model.h"

namespace updown {

// What the seven commands do to the task of a row. Main thread only. The commands that ask wait for
// the user with `owner` in front; the rows may have changed by then, and `owner` and this object
// may be gone, in which case the command ends there.
class TransferCommands {
 public:
  TransferCommands(FrameOperations& frame, const TickCounter& ticks, TransferModel& model,
                   RowUpdates& rows, Desktop desktop, QWidget* owner);

  // The window that is told to look for runnable tasks.
  void SetFrameWindow(WindowHandle frame) { frameWindow_ = frame; }

  void Run(StatusCommand command, int row);

 private:
  void PauseTask(const TransferTask& task);
  void ResumeTask(TransferTask& task);
  void RedoTask(const TaskPointer& task);
  void DeleteRow(int row);
  void OpenTaskFile(const TransferTask& task);
  void OpenTaskFolder(const TransferTask& task);
  void MoveTaskFile(const TaskPointer& task);

  // False ends the command: the service refused the task's session and no new one could be opened.
  bool ReopenIfRefused(TransferTask& task);
  bool Asked(StringId question, std::u16string_view fallback);
  void StartAgain(TransferTask& task);
  void WakeScheduler();
  void PostToFrame(std::uint32_t number);

  FrameOperations& frame_;
  const TickCounter& ticks_;
  TransferModel& model_;
  RowUpdates& rows_;
  Desktop desktop_;
  QWidget* owner_;
  WindowHandle frameWindow_;
};

}  // namespace updown
