#pragma once

#include <QAbstractTableModel>
#include <QBasicTimer>
#include <QIcon>
#include <array>
#include <vector>

#include "engine/transfer_task.h"
#include "platform/ticks.h"
#include "transfers/transfer_row.h"

namespace updown {

// For QSortFilterProxyModel::setSortRole: numbers sort as numbers.
inline constexpr int kTransferSortRole = Qt::UserRole + 201;

// What the line below the rows tells.
struct TransferTotals {
  float rate = 0;  // bytes per second
  int running = 0;
  int waiting = 0;
  int failed = 0;
};

// The rows of the transfers window, in the order in which their tasks were made, kept in step with
// what the engine announces. News about tasks without a row (those of the package cache, and those
// that are gone) do nothing. A state shows at once; blocks that come in quick succession show
// together, a moment later. Main thread only; the tick counter outlives it.
class TransferModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  explicit TransferModel(const TickCounter& ticks, QObject* parent = nullptr);

  // Null does nothing.
  void Add(const TaskPointer& task);
  // One call for many costs little more than one for one.
  void Remove(std::vector<TaskId> tasks);

  const TransferRow& RowAt(int row) const { return rows_[static_cast<std::size_t>(row)]; }
  TaskId TaskAt(int row) const { return RowAt(row).id; }
  int RowOf(TaskId task) const;           // -1 if there is none
  TaskPointer TaskOf(TaskId task) const;  // null if it has no row, or is gone
  std::vector<TaskId> TasksIn(ShownState state) const;
  TransferTotals Totals() const;

  // A path of the task is another one.
  void ShowPaths(TaskId task);
  // A run of the task has begun; a block has arrived; the run waits to make its connection anew; it
  // has ended.
  void ShowStarted(TaskId task);
  void ShowBlock(TaskId task);
  void ShowReconnecting(TaskId task) { SetCourse({task}, TransferCourse::Reconnecting); }
  void ShowEnded(TaskId task, const TransferResult& result);
  // The user has paused these, or has had them queued again.
  void ShowPaused(const std::vector<TaskId>& tasks) { SetCourse(tasks, TransferCourse::None); }
  void ShowQueued(const std::vector<TaskId>& tasks) {
    SetCourse(tasks, TransferCourse::QueuedAgain);
  }

  int rowCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
  }
  int columnCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : kTransferColumns;
  }
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  // Finished files can be dragged to other programs, which get copies.
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  QMimeData* mimeData(const QModelIndexList& indexes) const override;
  Qt::DropActions supportedDragActions() const override { return Qt::CopyAction; }

 protected:
  void timerEvent(QTimerEvent* event) override;

 private:
  using Rows = std::vector<TransferRow>;

  Rows::iterator Find(TaskId task);
  TransferRow* RowWith(TaskId task);
  int Number(const TransferRow& row) const { return static_cast<int>(&row - rows_.data()); }
  void GatherAtEnd(const std::vector<TaskId>& tasks);
  void SetCourse(const std::vector<TaskId>& tasks, TransferCourse course);
  void ShowBlocks();
  void Measure(TransferRow& row);
  void EndStalledRates();
  void ShowRows(std::vector<int> rows, TransferColumn from = TransferColumn::Name,
                TransferColumn to = TransferColumn::State);
  static QVariant SortValue(const TransferRow& row, TransferColumn column);
  QIcon IconOf(const TransferRow& row) const;

  const TickCounter& ticks_;
  Rows rows_;  // ascending by id, but while some are gathered at the end to be removed
  std::vector<TaskId> blocks_;   // tasks whose blocks do not show yet
  std::uint32_t lastShown_ = 0;  // when blocks were shown last
  QBasicTimer blockTimer_;
  QBasicTimer stallTimer_;  // while a row has a rate
  std::array<QIcon, 5> icons_;
};

}  // namespace updown
