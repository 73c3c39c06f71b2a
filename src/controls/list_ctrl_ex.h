#pragma once

#include <QTreeView>

#include <functional>
#include <memory>
#include <vector>

#include "controls/progress_painter.h"
#include "controls/transparent_static.h"
#include "engine/tasks.h"

namespace updown {

// The report list of the package list and the status window: rows of text over a model, a hint
// while there are none, and live progress bars over one column of the rows in view.
//
// Bars are children of the list, made for rows in view alone, and laid out again whenever the view
// would paint differently; a paint by itself never causes another one.
class CListCtrlEx : public QTreeView {
  Q_OBJECT

 public:
  explicit CListCtrlEx(QWidget* parent = nullptr);
  ~CListCtrlEx() override;

  void EnableHint(bool on);
  void SetProgressColumn(int column);  // -1: no bars

  // The task behind a row of the model; rows without one have no bar and no Delete key.
  using TaskOfRow = std::function<TaskPointer(int row)>;
  void SetTaskOfRow(TaskOfRow taskOfRow);

  // The selected row, which is the selection mark too; -1 if there is none.
  int SelectedRow() const;
  void SelectRow(int row);

  void setModel(QAbstractItemModel* model) override;

 Q_SIGNALS:
  // The Delete key on a selected row whose task is not Queued.
  void DeleteRequested();
  // Right click, Menu key or Shift+F10 on a row, which is selected by then.
  void RowMenuRequested(int row, const QPoint& globalPosition);

 protected:
  void keyReleaseEvent(QKeyEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void PaintProgress();
  void LayoutHint();
  void ScheduleLayout();

  std::vector<std::unique_ptr<CProgressPainter>> progressBars_;
  int barMargin_ = 0;
  int progressColumn_ = 0;
  std::unique_ptr<CTransparentStatic> hintText_;
  std::unique_ptr<CTransparentStatic> hintCover_;
  bool hintEnabled_ = false;
  TaskOfRow taskOfRow_;
};

}  // namespace updown
