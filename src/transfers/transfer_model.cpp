#include "transfers/transfer_model.h"

#include <QMimeData>
#include <QTimerEvent>
#include <QUrl>
#include <algorithm>
#include <limits>

#include "resources/qt/texts.h"
#include "service/result_codes.h"
#include "widgets/icons.h"
#include "widgets/progress_delegate.h"

namespace updown {
namespace {

constexpr int kBlockSpan = 100;      // ms between two looks at blocks
constexpr int kStallLook = 5000;     // ms
constexpr int kStallSpan = 15000;    // ms without a sample: what was measured is true no more
constexpr std::size_t kSparse = 16;  // one row in so many: each is told by itself

struct Heading {
  StringId text;
  Qt::AlignmentFlag alignment;
};

constexpr std::array<Heading, kTransferColumns> kHeadings{{
    {StringId::Name, Qt::AlignLeft},
    {StringId::SourceEnd, Qt::AlignLeft},
    {StringId::TargetEnd, Qt::AlignLeft},
    {StringId::Transferred, Qt::AlignRight},
    {StringId::Progress, Qt::AlignRight},
    {StringId::TransferRate, Qt::AlignRight},
    {StringId::TimeRemaining, Qt::AlignRight},
    {StringId::Status, Qt::AlignLeft},
}};

enum RowIcon : std::size_t { kUpload, kDownload, kFinished, kFailed, kStopped };

QVariant Alignment(int column) {
  return QVariant::fromValue<int>(kHeadings[static_cast<std::size_t>(column)].alignment |
                                  Qt::AlignVCenter);
}

// What is told late of the last run changes nothing for a task that has been queued again.
TransferCourse LaterCourse(TransferCourse held, TransferCourse told) {
  const bool ofARun = told == TransferCourse::Moving || told == TransferCourse::Reconnecting;
  return held == TransferCourse::QueuedAgain && ofARun ? held : told;
}

}  // namespace

TransferModel::TransferModel(const TickCounter& ticks, QObject* parent)
    : QAbstractTableModel(parent),
      ticks_(ticks),
      icons_{LoadIcon(Icon::Upload), LoadIcon(Icon::Download), LoadIcon(Icon::Finished),
             LoadIcon(Icon::Failed), LoadIcon(Icon::Stopped)} {}

TransferModel::Rows::iterator TransferModel::Find(TaskId task) {
  return std::lower_bound(rows_.begin(), rows_.end(), task,
                          [](const TransferRow& row, TaskId id) { return row.id < id; });
}

TransferRow* TransferModel::RowWith(TaskId task) {
  const auto found = Find(task);
  return found != rows_.end() && found->id == task ? &*found : nullptr;
}

int TransferModel::RowOf(TaskId task) const {
  const TransferRow* const row = const_cast<TransferModel*>(this)->RowWith(task);
  return row == nullptr ? -1 : Number(*row);
}

TaskPointer TransferModel::TaskOf(TaskId task) const {
  const int row = RowOf(task);
  return row < 0 ? nullptr : RowAt(row).task.lock();
}

std::vector<TaskId> TransferModel::TasksIn(ShownState state) const {
  std::vector<TaskId> tasks;
  for (const TransferRow& row : rows_) {
    if (row.state == state) {
      tasks.push_back(row.id);
    }
  }
  return tasks;
}

TransferTotals TransferModel::Totals() const {
  TransferTotals totals;
  for (const TransferRow& row : rows_) {
    switch (row.state) {
      case ShownState::Moving:
        totals.rate += row.rate.value_or(0);
        [[fallthrough]];
      case ShownState::Starting:
      case ShownState::Reconnecting:
        ++totals.running;
        break;
      case ShownState::Waiting:
        ++totals.waiting;
        break;
      case ShownState::Failed:
        ++totals.failed;
        break;
      default:
        break;
    }
  }
  return totals;
}

void TransferModel::Add(const TaskPointer& task) {
  if (!task || !task->record || RowWith(task->id) != nullptr) {
    return;
  }
  const auto place = Find(task->id);
  const int row = static_cast<int>(place - rows_.begin());
  beginInsertRows({}, row, row);
  const auto made = rows_.insert(place, MakeRow(task));
  made->meter.Begin(made->progress.doneBytes, ticks_.Now());
  endInsertRows();
}

void TransferModel::Remove(std::vector<TaskId> tasks) {
  std::sort(tasks.begin(), tasks.end());
  tasks.erase(std::unique(tasks.begin(), tasks.end()), tasks.end());
  std::erase_if(tasks, [this](TaskId task) { return RowOf(task) < 0; });
  if (tasks.empty()) {
    return;
  }
  const int count = static_cast<int>(tasks.size());
  int first = RowOf(tasks.front());
  if (RowOf(tasks.back()) - first + 1 != count) {
    GatherAtEnd(tasks);
    first = rowCount() - count;
  }
  beginRemoveRows({}, first, first + count - 1);
  const auto begin = rows_.begin() + first;
  rows_.erase(begin, begin + count);
  endRemoveRows();
}

// So that they go in one step: views and proxies look at all rows for each span that goes.
void TransferModel::GatherAtEnd(const std::vector<TaskId>& tasks) {
  const auto goes = [&tasks](const TransferRow& row) {
    return std::binary_search(tasks.begin(), tasks.end(), row.id);
  };
  Q_EMIT layoutAboutToBeChanged();
  std::vector<int> places;
  int kept = 0;
  int gone = rowCount() - static_cast<int>(tasks.size());
  for (const TransferRow& row : rows_) {
    places.push_back(goes(row) ? gone++ : kept++);
  }
  std::stable_partition(rows_.begin(), rows_.end(),
                        [&goes](const TransferRow& row) { return !goes(row); });
  const QModelIndexList held = persistentIndexList();
  QModelIndexList moved;
  for (const QModelIndex& index : held) {
    moved << createIndex(places[static_cast<std::size_t>(index.row())], index.column());
  }
  changePersistentIndexList(held, moved);
  Q_EMIT layoutChanged();
}

void TransferModel::ShowPaths(TaskId task) {
  if (const TaskPointer live = TaskOf(task)) {
    TransferRow& row = *RowWith(task);
    ReadPaths(row, *live);
    ShowRows({Number(row)}, TransferColumn::Name, TransferColumn::To);
  }
}

void TransferModel::ShowStarted(TaskId task) {
  if (const TaskPointer live = TaskOf(task)) {
    RowWith(task)->meter.Begin(live->Progress().doneBytes, ticks_.Now());
    SetCourse({task}, TransferCourse::Started);
  }
}

void TransferModel::ShowBlock(TaskId task) {
  TransferRow* const row = RowWith(task);
  if (row == nullptr) {
    return;
  }
  const bool begins = row->state != ShownState::Moving;
  row->course = LaterCourse(row->course, TransferCourse::Moving);
  blocks_.push_back(task);
  if (begins || ticks_.Now() - lastShown_ >= kBlockSpan) {
    ShowBlocks();
  } else if (!blockTimer_.isActive()) {
    blockTimer_.start(kBlockSpan, this);
  }
}

void TransferModel::ShowEnded(TaskId task, const TransferResult& result) {
  const TaskPointer live = TaskOf(task);
  if (!live) {
    return;
  }
  TransferRow& row = *RowWith(task);
  if (row.course != TransferCourse::QueuedAgain) {
    row.course = TransferCourse::None;
  }
  ReadProgress(row, *live);
  row.rate = row.meter.Average(row.progress.doneBytes, ticks_.Now());
  row.result = row.state == ShownState::Failed ? result : TransferResult();
  row.ended = QDateTime::currentDateTime();
  ShowRows({Number(row)});
}

void TransferModel::SetCourse(const std::vector<TaskId>& tasks, TransferCourse course) {
  std::vector<int> rows;
  for (const TaskId task : tasks) {
    if (const TaskPointer live = TaskOf(task)) {
      TransferRow& row = *RowWith(task);
      row.course = LaterCourse(row.course, course);
      row.result = {};
      ReadProgress(row, *live);
      rows.push_back(Number(row));
    }
  }
  ShowRows(std::move(rows));
}

void TransferModel::ShowBlocks() {
  blockTimer_.stop();
  lastShown_ = ticks_.Now();
  std::vector<int> changed;  // in their state too
  std::vector<int> moved;
  for (const TaskId task : std::exchange(blocks_, {})) {
    if (const TaskPointer live = TaskOf(task)) {
      TransferRow& row = *RowWith(task);
      const ShownState before = row.state;
      ReadProgress(row, *live);
      Measure(row);
      (row.state == before ? moved : changed).push_back(Number(row));
    }
  }
  ShowRows(std::move(changed));
  ShowRows(std::move(moved), TransferColumn::Transferred, TransferColumn::Remaining);
}

void TransferModel::Measure(TransferRow& row) {
  if (row.state != ShownState::Moving) {
    return;
  }
  if (!row.meter.TooEarly(lastShown_)) {
    row.rate = row.meter.Sample(row.progress.doneBytes, lastShown_);
  }
  if (row.rate && !stallTimer_.isActive()) {
    stallTimer_.start(kStallLook, this);
  }
}

void TransferModel::EndStalledRates() {
  std::vector<int> stalled;
  bool moves = false;
  for (TransferRow& row : rows_) {
    if (row.state != ShownState::Moving || !row.rate) {
      continue;
    }
    if (row.meter.SinceSample(ticks_.Now()) < kStallSpan) {
      moves = true;
    } else {
      row.rate.reset();
      stalled.push_back(Number(row));
    }
  }
  if (!moves) {
    stallTimer_.stop();
  }
  ShowRows(std::move(stalled), TransferColumn::Rate, TransferColumn::Remaining);
}

void TransferModel::timerEvent(QTimerEvent* event) {
  if (event->timerId() == blockTimer_.timerId()) {
    ShowBlocks();
  } else if (event->timerId() == stallTimer_.timerId()) {
    EndStalledRates();
  }
}

// A sorted view may look at all its rows for each announcement, and looks at all that one spans.
void TransferModel::ShowRows(std::vector<int> rows, TransferColumn from, TransferColumn to) {
  if (rows.empty()) {
    return;
  }
  const auto tell = [&](int first, int last) {
    Q_EMIT dataChanged(index(first, static_cast<int>(from)), index(last, static_cast<int>(to)));
  };
  std::sort(rows.begin(), rows.end());
  const int span = rows.back() - rows.front() + 1;
  if (static_cast<std::size_t>(span) <= rows.size() * kSparse) {
    tell(rows.front(), rows.back());
    return;
  }
  for (const int row : rows) {
    tell(row, row);
  }
}

QVariant TransferModel::SortValue(const TransferRow& row, TransferColumn column) {
  switch (column) {
    case TransferColumn::Transferred:
      return QVariant::fromValue<qulonglong>(row.progress.doneBytes);
    case TransferColumn::Progress:
      return BarOf(row).value_or(kWaitingBar - 1);
    case TransferColumn::Rate:
      return row.state == ShownState::Moving ? row.rate.value_or(0) : -1.0F;
    case TransferColumn::Remaining:
      return RemainingSeconds(row).value_or(std::numeric_limits<double>::max());
    case TransferColumn::State:
      return static_cast<int>(row.state);
    default:
      return CellText(row, column);
  }
}

QIcon TransferModel::IconOf(const TransferRow& row) const {
  switch (row.state) {
    case ShownState::Finished:
      return icons_[kFinished];
    case ShownState::Failed:
      return icons_[kFailed];
    case ShownState::Paused:
      return icons_[kStopped];
    default:
      return icons_[row.upload ? kUpload : kDownload];
  }
}

QVariant TransferModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= rowCount()) {
    return {};
  }
  const TransferRow& row = RowAt(index.row());
  const auto column = static_cast<TransferColumn>(index.column());
  switch (role) {
    case Qt::DisplayRole:
      return CellText(row, column);
    case Qt::ToolTipRole:
    case Qt::AccessibleDescriptionRole: {
      const QString tip = TipText(row, column);
      return tip.isEmpty() ? QVariant() : tip;
    }
    case Qt::DecorationRole:
      return column == TransferColumn::Name ? QVariant(IconOf(row)) : QVariant();
    case Qt::TextAlignmentRole:
      return Alignment(index.column());
    case kPercentRole: {
      const auto bar = column == TransferColumn::Progress ? BarOf(row) : std::nullopt;
      return bar ? QVariant(*bar) : QVariant();
    }
    case kTransferSortRole:
      return SortValue(row, column);
    default:
      return {};
  }
}

QVariant TransferModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section < 0 || section >= kTransferColumns) {
    return {};
  }
  switch (role) {
    case Qt::DisplayRole:
      return Text(kHeadings[static_cast<std::size_t>(section)].text);
    case Qt::TextAlignmentRole:
      return Alignment(section);
    default:
      return {};
  }
}

Qt::ItemFlags TransferModel::flags(const QModelIndex& index) const {
  const Qt::ItemFlags flags = QAbstractTableModel::flags(index);
  const bool whole = index.isValid() && RowAt(index.row()).state == ShownState::Finished;
  return whole ? flags | Qt::ItemIsDragEnabled : flags;
}

QMimeData* TransferModel::mimeData(const QModelIndexList& indexes) const {
  QList<QUrl> urls;
  for (const QModelIndex& index : indexes) {
    if (index.column() == static_cast<int>(TransferColumn::Name)) {
      urls << QUrl::fromLocalFile(LocalPath(RowAt(index.row())));
    }
  }
  auto* const data = new QMimeData;
  data->setUrls(urls);
  return data;
}

}  // namespace updown
