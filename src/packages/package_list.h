#pragma once

#include <QAction>
#include <QTimer>

#include "packages/package_columns.h"
#include "packages/package_commands.h"
#include "widgets/row_list_view.h"

namespace updown {

// One row for each package, with what its header says. It shows the area's selection and changes
// it; a heading sorts. Instead of rows it tells why there are none.
class PackageList : public RowListView {
  Q_OBJECT

 public:
  // `service` as the user knows it. Area and commands outlive the list.
  PackageList(PackageArea& area, PackageCommands& commands, QString service,
              QWidget* parent = nullptr);

  // Shows the packages alone that have this text in any column; empty: all.
  void SetFilter(const QString& text);

 protected:
  void rowsInserted(const QModelIndex& parent, int first, int last) override;
  void rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
  void resizeEvent(QResizeEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;

 private:
  void FollowSorting();
  void ShowSelection();
  void FollowConnection();
  void ShowConnection();
  void TellRowsInView();

  PackageArea& area_;
  PackageListColumns columns_;
  const QString service_;
  QAction* delete_;
  QTimer slow_;    // runs while nothing needs to be said yet of a request
  QTimer inView_;  // once for all that moves the rows in a short while
  bool following_ = false;
  bool selectedInView_ = false;  // when a sort began
};

}  // namespace updown
