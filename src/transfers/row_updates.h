#pragma once

#include <cstdint>

#include "engine/task_store.h"
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

  // The task was started (`code` is then a string id), or has ended with that result code, of
  // either sign. The code is kept in the task's lastResult.
  void UpdateRowState(TaskId id, std::int64_t code);

  // A block has arrived.
  void UpdateRowProgress(std::uint32_t recordId);

  // Empties the cells that tell of a transfer's course.
  void ClearProgress(int row);

 private:
  bool ShowState(int row, TransferTask& task, TransferState state);
  bool ShowSample(int row, TransferTask& task);
  bool ShowFinalRate(int row, TransferTask& task);
  void ShowCode(int row, TransferTask& task, TransferState state, std::int64_t code);
  void ShowImage(int row, const TransferTask& task, TransferState state);

  TransferModel& model_;
  const TickCounter& ticks_;
};

}  // namespace updown
