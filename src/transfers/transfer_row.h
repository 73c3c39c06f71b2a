#pragma once

#include <QDateTime>
#include <QString>
#include <cstdint>
#include <memory>
#include <optional>

#include "engine/transfer_task.h"
#include "service/transfer_result.h"
#include "transfers/rate_meter.h"

namespace updown {

enum class TransferColumn : int { Name, From, To, Transferred, Progress, Rate, Remaining, State };
inline constexpr int kTransferColumns = 8;

// Where a transfer stands, in the order in which it is sorted. Unknown: a state that only a foreign
// task list can bring.
enum class ShownState {
  Moving,
  Starting,
  Reconnecting,
  Waiting,
  Paused,
  Failed,
  Finished,
  Unknown
};

// What has been told last of a Queued task: by the engine, or by the user who had it queued again,
// which its worker may not have done yet.
enum class TransferCourse { None, QueuedAgain, Started, Moving, Reconnecting };

// What is known of a transfer that has a row, as it was last looked at. It does not keep its task
// alive: once that is gone from the queue and from its worker, there is none.
struct TransferRow {
  TaskId id = 0;
  std::weak_ptr<TransferTask> task;
  QString name;
  QString from;
  QString to;
  bool upload = false;

  TransferCourse course = TransferCourse::None;
  ShownState state = ShownState::Waiting;
  TaskProgress progress;
  RateMeter meter;
  std::optional<float> rate;  // bytes per second, of one that moves; behind its end the average
  TransferResult result;      // of the last run; with code 0 nothing is to be told
  QDateTime ended;            // invalid: not in this run of the program
};

inline const QString& LocalPath(const TransferRow& row) { return row.upload ? row.from : row.to; }

TransferRow MakeRow(const TaskPointer& task);
void ReadPaths(TransferRow& row, const TransferTask& task);
// State and progress. Takes the rate away from one that does not move any more.
void ReadProgress(TransferRow& row, const TransferTask& task);

// Seconds; nothing for a transfer that does not move, or whose size is not known.
std::optional<double> RemainingSeconds(const TransferRow& row);

// What its bar shows, as kPercentRole; nothing: it has none.
std::optional<float> BarOf(const TransferRow& row);

// Texts of the cells, in the language in force.
QString CellText(const TransferRow& row, TransferColumn column);
// All that there is to say in a tip, in lines; empty if that is what the cell says.
QString TipText(const TransferRow& row, TransferColumn column);

}  // namespace updown
