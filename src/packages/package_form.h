#pragma once

#include <QGroupBox>
#include <QPlainTextEdit>
#include <QScrollArea>
#include <QTimer>
#include <array>

#include "packages/attachment_list.h"
#include "packages/field_value.h"
#include "packages/package_area.h"

namespace updown {

// The lower right pane: header, notes and, for a complete package, the attachments of the package
// that is selected in the area. Where it is small it scrolls.
class PackageForm : public QScrollArea {
  Q_OBJECT

 public:
  // Both outlive the form.
  PackageForm(PackageArea& area, PackageCommands& commands, QWidget* parent = nullptr);

  AttachmentList& Attachments() { return *attachments_; }

 private:
  QLayout* MakeFields();
  QGroupBox* MakeGroup(StringId title, const QString& name, QWidget* inside);
  void ShowHeader();
  void ShowFiles();

  PackageArea& area_;
  std::array<FieldValue*, 5> fields_{};
  QPlainTextEdit* notes_;
  AttachmentList* attachments_;
  QGroupBox* attachmentGroup_ = nullptr;
  FieldValue* onTheWay_;  // in the place of the attachments
  QTimer slow_;           // runs while nothing needs to be said yet of the files asked for
};

}  // namespace updown
