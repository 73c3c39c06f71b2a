#pragma once

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QWidget>
#include <chrono>

#include "engine/frame_operations.h"
#include "packages/package_list_model.h"
#include "platform/qt/message_target.h"
#include "service/operations.h"
#include "widgets/list_ctrl_ex.h"
#include "widgets/sort_header_ctrl.h"

namespace updown {

// The upper right pane: one row for each package, with what its header files in the cache say.
class CMyFileListFormView : public QWidget {
  Q_OBJECT

 public:
  explicit CMyFileListFormView(FrameOperations& frame, QWidget* parent = nullptr);
  ~CMyFileListFormView() override;

  WindowHandle Handle() const { return target_.Handle(); }
  void WireWindows(WindowHandle tree, WindowHandle frame, WindowHandle form);

  void InitList();

  // Reads again what the rows without a sender show; called when a header file has arrived. When
  // there are so many that it takes time, calls that come close together become one a little later.
  void RefreshHeaderlessRows();

  // Gives the list the keyboard.
  void FocusList();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void timerEvent(QTimerEvent* event) override;

 private:
  MessageResult WindowProc(const WindowMessage& message);

  void AddPackageRow(LongParam treeItem, const DirectoryEntry& entry);
  void ClearRows();
  void LoadPackageRow(int row);
  void ReadHeaderlessRows();
  void SortBy(int column);
  void OnSelectionChanged(const QItemSelection& selected);
  void SelectPackage(int row);
  void ClearForm();
  void RefreshList();
  void ShowRowMenu(const QPoint& globalPosition);
  void DeleteSelectedPackages();
  bool DeletePackage(int row);
  bool HaveFrame();

  FrameOperations& frame_;
  WindowHandle treeWindow_;
  WindowHandle frameWindow_;
  WindowHandle formWindow_;
  CListCtrlEx* list_;
  CSortHeaderCtrl* header_;
  PackageListModel* model_;
  QElapsedTimer sinceRead_;
  std::chrono::milliseconds readPause_{0};
  QBasicTimer nextRead_;
  MessageTarget target_;
};

}  // namespace updown
