#include "packages/package_form.h"

#include <QEvent>
#include <algorithm>

#include "engine/result_texts.h"
#include "packages/form_layout.h"
#include "packages/group_frame.h"
#include "packages/header_text.h"
#include "platform/qt/text.h"
#include "resources/qt/texts.h"
#include "resources/string_id.h"

namespace updown {
namespace {

void Place(QWidget& widget, const Box& box) {
  widget.setGeometry(box.left, box.top, std::max(box.right - box.left, 0),
                     std::max(box.bottom - box.top, 0));
}

}  // namespace

PackageForm::PackageForm(PackageArea& area, QWidget* parent)
    : QWidget(parent),
      area_(area),
      headerText_(new HeaderLabel(this)),
      noteGroup_(new GroupFrame(this)),
      notesEdit_(new CEditNoMenu(this)),
      attachmentGroup_(new GroupFrame(this)),
      attachments_(new AttachmentList(this)) {
  setObjectName(QStringLiteral("packageForm"));
  setAccessibleName(Text(StringId::PackageFormName));
  setMinimumSize(1, 1);  // the pane can be made as small as its splitter lets it
  setBackgroundRole(QPalette::Base);
  setAutoFillBackground(true);
  headerText_->setObjectName(QStringLiteral("packageHeader"));
  noteGroup_->setObjectName(QStringLiteral("noteGroup"));
  noteGroup_->setTitle(Text(StringId::GroupNote));
  notesEdit_->setObjectName(QStringLiteral("packageNotes"));
  notesEdit_->setAccessibleName(Text(StringId::GroupNote));
  attachmentGroup_->setObjectName(QStringLiteral("attachmentGroup"));
  attachmentGroup_->setTitle(Text(StringId::GroupAttachments));
  slow_.setSingleShot(true);
  slow_.setInterval(area_.Quiet());
  connect(&slow_, &QTimer::timeout, this,
          [this] { attachments_->SetHint(Text(StringId::FilesAsked)); });
  connect(&area_, &PackageArea::SelectionChanged, this, [this] {
    slow_.start();
    attachments_->SetHint({});  // the one of the package before
    ShowHeader();
    ShowFiles();
  });
  connect(&area_, &PackageArea::HeaderChanged, this, &PackageForm::ShowHeader);
  connect(&area_, &PackageArea::FilesChanged, this, &PackageForm::ShowFiles);
  ShowHeader();
}

// Without a package the layout stays as it is.
void PackageForm::ShowHeader() {
  const PackageHeader header = area_.SelectedHeader();
  QString text = ToQString(HeaderText(header));
  headerText_->setText(text.remove(u'\r'));
  const QString notes = ToQString(BreakLongLines(header.notes)).remove(u'\r');
  if (notesEdit_->toPlainText() != notes) {
    notesEdit_->setPlainText(notes);
  }
  if (!area_.Selected().empty()) {
    complete_ = area_.SelectedIsComplete();
  }
  LayoutForm();
}

void PackageForm::ShowFiles() {
  using State = PackageFiles::State;
  const PackageFiles& files = area_.Files();
  attachments_->Show(area_.Selected(), files);
  if (files.state != State::Asked) {
    slow_.stop();
    attachments_->SetHint(files.state == State::Failed ? ToQString(ResultBoxText(files.report))
                                                       : QString());
  } else if (!slow_.isActive()) {
    slow_.start();
  }
}

void PackageForm::LayoutForm() {
  if (lineHeight_ == 0) {
    lineHeight_ = headerText_->LineHeight();
  }
  const FormLayout layout = LayOutForm(width(), height(), lineHeight_, complete_);
  Place(*headerText_, layout.header);
  Place(*noteGroup_, layout.noteGroup);
  Place(*notesEdit_, layout.notes);
  if (complete_) {
    Place(*attachmentGroup_, layout.attachmentGroup);
    Place(*attachments_, layout.attachments);
  }
  attachmentGroup_->setVisible(complete_);
  attachments_->setVisible(complete_);
  update();
}

void PackageForm::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  LayoutForm();
}

void PackageForm::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
    lineHeight_ = 0;
    LayoutForm();
  }
}

}  // namespace updown
