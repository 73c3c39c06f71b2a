#pragma once

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QWidget>
#include <chrono>

#include "engine/cache.h"
#include "engine/launch_state.h"
#include "packages/area_requests.h"
#include "packages/package_list_model.h"
#include "packages/tree_item.h"
#include "service/operations.h"
#include "widgets/list_ctrl_ex.h"
#include "widgets/sort_header_ctrl.h"

namespace updown {

// The upper right pane: one row for each package, with what its header files in the cache say.
class CMyFileListFormView : public QWidget {
  Q_OBJECT

 public:
  // What it is given outlives it.
  CMyFileListFormView(AreaRequests& area, const PackageCache& cache, const LaunchState& launch,
                      QWidget* parent = nullptr);
  ~CMyFileListFormView() override;

  void AddPackageRow(TreeItem item, const DirectoryEntry& entry);
  void SelectTopRow();

  // Reads again what the rows without a sender show; called when a header file has arrived. When
  // there are so many that it takes time, calls that come close together become one a little later.
  void RefreshHeaderlessRows();

  // Gives the list the keyboard.
  void FocusList();

 Q_SIGNALS:
  // All are meant to be taken at once.
  void PackageSelected(const std::u16string& name, TreeItem item);
  void SelectionCleared();
  void PackageDeleted(TreeItem item);
  void RefreshWanted();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void timerEvent(QTimerEvent* event) override;

 private:
  void InitList();
  void LoadPackageRow(int row);
  void ReadHeaderlessRows();
  void SortBy(int column);
  void OnSelectionChanged(const QItemSelection& selected);
  void SelectPackage(int row);
  void RefreshList();
  void ShowRowMenu(const QPoint& globalPosition);
  void DeleteSelectedPackages();
  bool DeletePackage(int row);

  AreaRequests& area_;
  const PackageCache& cache_;
  const LaunchState& launch_;
  CListCtrlEx* list_;
  CSortHeaderCtrl* header_;
  PackageListModel* model_;
  QElapsedTimer sinceRead_;
  std::chrono::milliseconds readPause_{0};
  QBasicTimer nextRead_;
};

}  // namespace updown
