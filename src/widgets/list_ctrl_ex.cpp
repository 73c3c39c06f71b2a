#include "widgets/list_ctrl_ex.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QScrollBar>
#include <algorithm>
#include <utility>

#include "widgets/list_layout.h"

namespace updown {

CListCtrlEx::CListCtrlEx(QWidget* parent) : RowListView(parent) {
  layoutTimer_.setSingleShot(true);
  connect(&layoutTimer_, &QTimer::timeout, this, &CListCtrlEx::LayOut);
}

CListCtrlEx::~CListCtrlEx() {
  // The header speaks while the base classes end.
  if (watchedHeader_ != nullptr) {
    disconnect(watchedHeader_, nullptr, this, nullptr);
  }
}

void CListCtrlEx::SetProgressColumn(int column) {
  progressColumn_ = column;
  ScheduleLayout();
}

void CListCtrlEx::SetTaskOfRow(TaskOfRow taskOfRow) {
  taskOfRow_ = std::move(taskOfRow);
  ScheduleLayout();
}

void CListCtrlEx::setModel(QAbstractItemModel* model) {
  if (model == this->model()) {
    return;
  }
  if (this->model() != nullptr) {
    disconnect(this->model(), nullptr, this, nullptr);
  }
  RowListView::setModel(model);
  if (model != nullptr) {
    using Model = QAbstractItemModel;
    connect(model, &Model::rowsInserted, this, &CListCtrlEx::ScheduleLayout);
    connect(model, &Model::rowsRemoved, this, &CListCtrlEx::ScheduleLayout);
    connect(model, &Model::rowsMoved, this, &CListCtrlEx::ScheduleLayout);
    connect(model, &Model::dataChanged, this, &CListCtrlEx::ScheduleLayout);
    connect(model, &Model::layoutChanged, this, &CListCtrlEx::ScheduleLayout);
    connect(model, &Model::modelReset, this, &CListCtrlEx::ScheduleLayout);
  }
  ScheduleLayout();
}

// The owner may exchange the header at any time, so it is looked at anew in each layout.
void CListCtrlEx::WatchHeader() {
  if (watchedHeader_ == header()) {
    return;
  }
  watchedHeader_ = header();
  connect(header(), &QHeaderView::sectionResized, this, &CListCtrlEx::ScheduleLayout);
  connect(header(), &QHeaderView::sectionMoved, this, &CListCtrlEx::ScheduleLayout);
  connect(header(), &QHeaderView::geometriesChanged, this, &CListCtrlEx::ScheduleLayout);
}

void CListCtrlEx::ScheduleLayout() {
  if (!layoutTimer_.isActive()) {
    layoutTimer_.start(0);
  }
}

void CListCtrlEx::LayOut() {
  WatchHeader();
  if (progressColumn_ != -1) {
    PaintProgress();
  } else {
    progressBars_.clear();
  }
}

TaskPointer CListCtrlEx::TaskWithRecord(int row) const {
  TaskPointer task = taskOfRow_ ? taskOfRow_(row) : nullptr;
  return task != nullptr && task->record != nullptr ? task : nullptr;
}

void CListCtrlEx::PaintProgress() {
  std::vector<ProgressBar> former = std::exchange(progressBars_, {});
  if (!taskOfRow_ || progressColumn_ >= ColumnCount()) {
    return;
  }
  const QModelIndex first = indexAt(QPoint(0, 0));
  for (int row = first.row(); row >= 0 && row < RowCount(); ++row) {
    if (visualRect(model()->index(row, 0)).top() >= viewport()->height()) {
      break;
    }
    ShowProgress(row, former);
  }
}

void CListCtrlEx::ShowProgress(int row, std::vector<ProgressBar>& former) {
  using Kind = ProgressCell::Kind;
  const TaskPointer task = TaskWithRecord(row);
  if (task == nullptr) {
    return;
  }
  const ProgressCell cell = ChooseProgressCell(FactsOf(*task));
  const QModelIndex index = model()->index(row, progressColumn_);
  if (cell.kind == Kind::NotAvailable) {
    const QString text = QStringLiteral("N/A");
    if (index.data().toString() != text) {
      model()->setData(index, text, Qt::DisplayRole);
    }
  }
  if (cell.kind != Kind::WaitingBar && cell.kind != Kind::PercentBar) {
    return;
  }
  const bool waiting = cell.kind == Kind::WaitingBar;
  auto bar = TakeBar(task->id, waiting, former);
  const QRect rowRect = visualRect(model()->index(row, 0));
  bar->setGeometry(BarRect(QRect(columnViewportPosition(progressColumn_), rowRect.top(),
                                 columnWidth(progressColumn_), rowRect.height())));
  bar->setVisible(!isColumnHidden(progressColumn_));
  if (!waiting && (bar->Waiting() || bar->Percent() != cell.percent)) {
    bar->SetWaiting(false);
    bar->SetPercent(cell.percent);
  }
  progressBars_.push_back({task->id, std::move(bar)});
}

std::unique_ptr<CProgressPainter> CListCtrlEx::TakeBar(TaskId task, bool waiting,
                                                       std::vector<ProgressBar>& former) {
  for (ProgressBar& bar : former) {
    // Nothing switches a bar back to waiting.
    if (bar.task == task && bar.painter != nullptr && bar.painter->Waiting() >= waiting) {
      return std::move(bar.painter);
    }
  }
  auto bar = std::make_unique<CProgressPainter>(viewport());
  bar->setObjectName(QStringLiteral("progressBar"));
  bar->setAccessibleName(model()->headerData(progressColumn_, Qt::Horizontal).toString());
  bar->setContentsMargins(1, 1, 1, 1);
  bar->Create();
  return bar;
}

void CListCtrlEx::keyReleaseEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Delete && !event->isAutoRepeat()) {
    const int row = SelectedRow();
    const TaskPointer task = row >= 0 ? TaskWithRecord(row) : nullptr;
    if (task != nullptr) {
      Q_EMIT DeleteRequested();
    }
  }
  RowListView::keyReleaseEvent(event);
}

void CListCtrlEx::resizeEvent(QResizeEvent* event) {
  RowListView::resizeEvent(event);
  ScheduleLayout();
}

void CListCtrlEx::scrollContentsBy(int dx, int dy) {
  RowListView::scrollContentsBy(dx, dy);
  ScheduleLayout();
}

void CListCtrlEx::changeEvent(QEvent* event) {
  RowListView::changeEvent(event);
  switch (event->type()) {
    case QEvent::FontChange:
    case QEvent::PaletteChange:
    case QEvent::StyleChange:
      ScheduleLayout();
      break;
    default:
      break;
  }
}

}  // namespace updown
