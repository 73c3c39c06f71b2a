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

  // A run of the task has begun, a block has arrived, the run has ended. A failure's
  // reason stands in the row, and at length in its tip.
  void ShowStarted(TaskId id);
  void ShowBlock(TaskId id);
  void ShowEnded(TaskId id, const TransferResult& result);
  // The run waits to make its connection anew.
  void ShowWaiting(TaskId id);
  // The user has had the task queued again.
  void ShowQueued(TaskId id);

  // Empties the cells that tell of a transfer's course.
  void ClearProgress(int row);

 private:
  void ShowState(int row, TransferTask& task, TransferState state);
  void ShowSample(int row, TransferTask& task);
  void ShowFinalRate(int row, TransferTask& task);
  void ShowFailure(int row, TransferState state, const TransferResult& result, const QString& time);
  void ShowOutcome(int row, TransferState state, const QString& text);
  void ShowImage(int row, const TransferTask& task, TransferState state);

  TransferModel& model_;
  const TickCounter& ticks_;
};

}  // namespace updown
