#pragma once

#include <QTimer>

#include "packages/package_columns.h"
#include "widgets/row_list_view.h"

namespace updown {

// The upper right pane: one row for each package, with what its header says. It shows the area's
// selection and changes it; a heading sorts. Instead of rows it tells why there are none.
class PackageList : public RowListView {
  Q_OBJECT

 public:
  // `service` as the user knows it. The area outlives the list.
  PackageList(PackageArea& area, QString service, QWidget* parent = nullptr);

 Q_SIGNALS:
  void DeleteWanted(const QString& package);

 protected:
  void rowsInserted(const QModelIndex& parent, int first, int last) override;
  void rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
  void resizeEvent(QResizeEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;

 private:
  void InitHeader();
  void ShowSelection();
  void FollowConnection();
  void ShowConnection(bool slow);
  void TellRowsInView();
  void ShowMenu(const QPoint& globalPosition);

  PackageArea& area_;
  PackageListColumns columns_;
  const QString service_;
  QTimer slow_;    // runs while nothing needs to be said yet of a request
  QTimer inView_;  // once for all that moves the rows in a short while
  bool following_ = false;
};

}  // namespace updown
