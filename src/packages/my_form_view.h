#pragma once

#include <QGroupBox>
#include <QWidget>
#include <string>

#include "engine/frame_operations.h"
#include "engine/package.h"
#include "packages/attachment_model.h"
#include "packages/edit_no_menu.h"
#include "packages/header_label.h"
#include "platform/qt/message_target.h"
#include "service/operations.h"
#include "widgets/link_list_ctrl.h"
#include "widgets/sort_header_ctrl.h"

namespace updown {

// The lower right pane: header, notes and, for a complete package, the attachments of the package
// that is selected in the list.
class CMyFormView : public QWidget {
  Q_OBJECT

 public:
  explicit CMyFormView(FrameOperations& frame, QWidget* parent = nullptr);
  ~CMyFormView() override;

  WindowHandle Handle() const { return target_.Handle(); }
  void WireWindows(WindowHandle frame);

  void InitForm();

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  MessageResult WindowProc(const WindowMessage& message);

  void ApplyPackage(const std::u16string& name);
  void SetHeader(const PackageHeader& header);
  void SetCurrentFolder(const std::u16string* path);
  void LayoutForm();
  bool HaveFrame();

  void InitAttachmentList();
  void AddAttachmentRow(LongParam treeItem, const DirectoryEntry& entry);
  void ClearAttachments();
  void OnCellClicked(int row, int column);
  void ActivateAttachment();
  bool SaveSelectedAttachment();
  void DeleteSelectedAttachments();
  void OnColumnClicked(int column);
  void ShowRowMenu(const QPoint& globalPosition);
  void ResetTips();
  std::u16string PathOf(const std::u16string& name) const;

  FrameOperations& frame_;
  WindowHandle frameWindow_;
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
  MessageTarget target_;
};

}  // namespace updown
