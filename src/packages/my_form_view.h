#pragma once

#include <QGroupBox>
#include <QWidget>
#include <string>

#include "engine/cache.h"
#include "engine/launch_state.h"
#include "engine/package.h"
#include "packages/area_requests.h"
#include "packages/attachment_model.h"
#include "packages/edit_no_menu.h"
#include "packages/header_label.h"
#include "packages/package_downloads.h"
#include "service/operations.h"
#include "widgets/link_list_ctrl.h"
#include "widgets/sort_header_ctrl.h"

namespace updown {

// The lower right pane: header, notes and, for a complete package, the attachments of the package
// that is selected in the list.
class CMyFormView : public QWidget {
  Q_OBJECT

 public:
  // What it is given outlives it.
  CMyFormView(AreaRequests& area, PackageDownloads& downloads, const PackageCache& cache,
              const LaunchState& launch, QWidget* parent = nullptr);
  ~CMyFormView() override;

  void ShowPackage(const std::u16string& name);
  void Clear();  // header, notes and attachments; the layout stays

  // The folder in which the attachments lie, and the attachments.
  void SetCurrentFolder(const std::u16string& path);
  void ClearAttachments();
  void AddAttachmentRow(const DirectoryEntry& entry);

 Q_SIGNALS:
  void TransfersWanted();  // the status window is to come forward

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void SetTexts(const PackageHeader& header);
  void SetHeader(const PackageHeader& header);
  void LayoutForm();

  void InitAttachmentList();
  void OnCellClicked(int row, int column);
  void ActivateAttachment();
  bool SaveSelectedAttachment();
  void DeleteSelectedAttachments();
  void OnColumnClicked(int column);
  void ShowRowMenu(const QPoint& globalPosition);
  void ResetTips();
  std::u16string PathOf(const std::u16string& name) const;

  AreaRequests& area_;
  PackageDownloads& downloads_;
  const PackageCache& cache_;
  const LaunchState& launch_;
  HeaderLabel* headerText_;
  QGroupBox* noteGroup_;
  CEditNoMenu* notesEdit_;
  QGroupBox* attachmentGroup_;
  CLinkListCtrl* attachmentList_;
  AttachmentModel* attachmentModel_;
  CSortHeaderCtrl* headerCtrl_;
  StringId packageStatus_ = StringId::Completed;  // or Incomplete
  int lineHeight_ = 0;                            // of the header; 0: not worked out yet
  std::string currentFolder_;                     // UTF-8 service path
  int sortColumn_ = -1;
  bool sortAscending_ = true;
  int attachmentSortDirection_ = 1;
  int attachmentSortColumn_ = 0;
};

}  // namespace updown
