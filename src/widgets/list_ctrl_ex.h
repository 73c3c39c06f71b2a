#pragma once

#include <QPointer>
#include <QTimer>
#include <functional>
#include <memory>
#include <vector>

#include "engine/transfer_task.h"
#include "widgets/progress_painter.h"
#include "widgets/row_list_view.h"

namespace updown {

// The report list of the status window: rows of text over a model, and live progress bars over one
// column of the rows in view.
//
// Bars are children of the list, made for rows in view alone, and laid out again whenever the view
// would paint differently; a paint by itself never causes another one. Where a task has no bar but
// no percentage either, the list puts "N/A" into the cell with the model's setData (DisplayRole).
class CListCtrlEx : public RowListView {
  Q_OBJECT

 public:
  explicit CListCtrlEx(QWidget* parent = nullptr);
  ~CListCtrlEx() override;

  void SetProgressColumn(int column);  // -1: no bars

  // The task behind a row of the model; rows without one have no bar and no Delete key.
  using TaskOfRow = std::function<TaskPointer(int row)>;
  void SetTaskOfRow(TaskOfRow taskOfRow);

  void setModel(QAbstractItemModel* model) override;

 Q_SIGNALS:
  // The Delete key on a selected row that has a task.
  void DeleteRequested();

 protected:
  void keyReleaseEvent(QKeyEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void changeEvent(QEvent* event) override;

 private:
  // A bar goes with its task, so that it keeps its phase of blinking when rows move.
  struct ProgressBar {
    TaskId task = 0;
    std::unique_ptr<CProgressPainter> painter;
  };

  void LayOut();
  void PaintProgress();
  void ScheduleLayout();
  void WatchHeader();
  TaskPointer TaskWithRecord(int row) const;
  void ShowProgress(int row, std::vector<ProgressBar>& former);
  std::unique_ptr<CProgressPainter> TakeBar(TaskId task, bool waiting,
                                            std::vector<ProgressBar>& former);

  std::vector<ProgressBar> progressBars_;
  int progressColumn_ = 0;
  QTimer layoutTimer_;  // once for each turn of the event loop
  TaskOfRow taskOfRow_;
  QPointer<QHeaderView> watchedHeader_;
};

}  // namespace updown
