#include "transfers/menu_rules.h"

namespace updown {

EnabledCommands CommandsFor(TransferState state, bool running, bool bytesMoved) {
  //                                pause  resume redo   delete file   folder move   copy
  constexpr EnabledCommands kWaiting{true, false, false, true, false, false, false, true};
  constexpr EnabledCommands kMoving{true, false, true, true, false, true, false, true};
  constexpr EnabledCommands kStarting{true, false, true, true, false, false, false, true};
  constexpr EnabledCommands kHalted{true, false, false, true, false, true, false, true};
  constexpr EnabledCommands kStopping{false, false, false, true, false, true, false, true};
  constexpr EnabledCommands kIdle{false, true, true, true, false, true, false, true};
  constexpr EnabledCommands kFinished{false, false, true, true, true, true, true, true};
  constexpr EnabledCommands kForeign{false, false, false, true, false, false, false, true};
  switch (state) {
    case TransferState::Queued:
      if (!running) {
        return bytesMoved ? kHalted : kWaiting;
      }
      return bytesMoved ? kMoving : kStarting;
    case TransferState::Stopped:
      return running ? kStopping : kIdle;
    case TransferState::Finished:
      return kFinished;
    case TransferState::Failed:
      return kIdle;
  }
  return kForeign;
}

EnabledCommands CommandsFor(const TransferTask& task) {
  const bool bytesMoved =
      task.record->doneBytes != 0 || (task.childRecord && task.childRecord->doneBytes != 0);
  return CommandsFor(task.record->state, task.Running(), bytesMoved);
}

}  // namespace updown
