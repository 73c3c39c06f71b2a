#pragma once

#include <cstdint>

#include "engine/engine_events.h"
#include "engine/transfer_task.h"
#include "platform/ticks.h"
#include "transfers/transfer_model.h"

namespace updown {

// Keeps the rows of the status window in step with what the engine announces. Announcements about
// tasks without a row (those of the package cache, and those that are gone) do nothing. Main thread
// only; model and tick counter outlive it.
class RowUpdates {
 public:
  RowUpdates(TransferModel& model, const TickCounter& ticks) : model_(model), ticks_(ticks) {}

  // Begins the task's statistics and appends its row.
  void AddRow(const TaskPointer& task);

  // The task's service path is another one.
  void ShowPaths(TaskId id);

  // A run of the task has begun, a block has arrived, the run has ended. The code of the end is
  // kept in the task's lastResult, without its sign.
  void ShowStarted(TaskId id);
  void ShowBlock(TaskId id);
  void ShowEnded(TaskId id, const TransferResult& result);

  // Empties the cells that tell of a transfer's course.
  void ClearProgress(int row);

 private:
  bool ShowState(int row, TransferTask& task, TransferState state);
  bool ShowSample(int row, TransferTask& task);
  bool ShowFinalRate(int row, TransferTask& task);
  // `code` without its sign.
  void ShowCode(int row, TransferTask& task, TransferState state, std::uint32_t code);
  void ShowOutcome(int row, TransferState state, const QString& text);
  void ShowImage(int row, const TransferTask& task, TransferState state);

  TransferModel& model_;
  const TickCounter& ticks_;
};

}  // namespace updown
