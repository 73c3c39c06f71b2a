#pragma once

#include <array>
#include <cstddef>

#include "engine/transfer_task.h"

namespace updown {

// What the menu offers for a transfer, in the order of its items.
enum class TransferCommand {
  Pause,
  Resume,
  Redo,
  Delete,
  OpenFile,
  OpenFolder,
  MoveFile,
  CopyPath
};
inline constexpr std::size_t kTransferCommands = 8;

using EnabledCommands = std::array<bool, kTransferCommands>;

// Which commands a task has in this state; the index is the TransferCommand. `bytesMoved`: anything
// at all has arrived. A Stopped task has no Resume and no Redo until its worker has ended. A
// state that only a foreign task list can bring has no command but Delete.
EnabledCommands CommandsFor(TransferState state, bool running, bool bytesMoved);

EnabledCommands CommandsFor(const TransferTask& task);

}  // namespace updown
