#pragma once

#include <QGroupBox>
#include <QLabel>
#include <QTimer>

#include "packages/attachment_list.h"
#include "packages/edit_no_menu.h"
#include "packages/header_label.h"
#include "packages/package_area.h"

namespace updown {

// The lower right pane: header, notes and, for a complete package, the attachments of the package
// that is selected in the area.
class PackageForm : public QWidget {
  Q_OBJECT

 public:
  // The area outlives the form.
  PackageForm(PackageArea& area, QWidget* parent = nullptr);

  AttachmentList& Attachments() { return *attachments_; }

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void ShowHeader();
  void ShowFiles();
  void LayoutForm();

  PackageArea& area_;
  HeaderLabel* headerText_;
  QGroupBox* noteGroup_;
  CEditNoMenu* notesEdit_;
  QGroupBox* attachmentGroup_;
  AttachmentList* attachments_;
  QTimer slow_;           // runs while nothing needs to be said yet of the files asked for
  bool complete_ = true;  // the package shown last; before the first one all parts show
  int lineHeight_ = 0;    // of the header; 0: not worked out yet
};

}  // namespace updown
