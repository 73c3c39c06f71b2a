#include "packages/my_form_view.h"

#include <QEvent>
#include <algorithm>

#include "localdata/file_names.h"
#include "packages/form_layout.h"
#include "packages/group_frame.h"
#include "packages/header_text.h"
#include "platform/qt/text.h"
#include "resources/qt/texts.h"

namespace updown {
namespace {

void Place(QWidget& widget, const Box& box) {
  widget.setGeometry(box.left, box.top, std::max(box.right - box.left, 0),
                     std::max(box.bottom - box.top, 0));
}

}  // namespace

CMyFormView::CMyFormView(AreaRequests& area, PackageDownloads& downloads, const PackageCache& cache,
                         const LaunchState& launch, QWidget* parent)
    : QWidget(parent),
      area_(area),
      downloads_(downloads),
      cache_(cache),
      launch_(launch),
      headerText_(new HeaderLabel(this)),
      noteGroup_(new GroupFrame(this)),
      notesEdit_(new CEditNoMenu(this)),
      attachmentGroup_(new GroupFrame(this)),
      attachmentList_(new CLinkListCtrl(this)),
      attachmentModel_(new AttachmentModel(this)),
      headerCtrl_(new CSortHeaderCtrl(attachmentList_)) {
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
  attachmentList_->setObjectName(QStringLiteral("attachmentList"));
  attachmentList_->setAccessibleName(Text(StringId::GroupAttachments));
  SetHeader({});
  InitAttachmentList();
  LayoutForm();
}

CMyFormView::~CMyFormView() = default;

void CMyFormView::SetCurrentFolder(const std::u16string& path) {
  currentFolder_ = WideToUtf8Name(path);
}

void CMyFormView::ShowPackage(const std::u16string& name) {
  const PackageFiles files = FindPackageFiles(cache_, name);
  packageStatus_ = files.status;
  SetTexts(files.readPath.empty() ? PackageHeader()
                                  : ReadPackageHeader(files.readPath, launch_.CodePage()));
}

void CMyFormView::Clear() {
  SetTexts({});
  ClearAttachments();
}

void CMyFormView::SetTexts(const PackageHeader& header) {
  SetHeader(header);
  notesEdit_->setPlainText(ToQString(BreakLongLines(header.notes)));
  LayoutForm();
}

void CMyFormView::SetHeader(const PackageHeader& header) {
  QString text = ToQString(HeaderText(header));
  headerText_->setText(text.replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
}

void CMyFormView::LayoutForm() {
  if (lineHeight_ == 0) {
    lineHeight_ = headerText_->LineHeight();
  }
  const bool complete = packageStatus_ == StringId::Completed;
  const FormLayout layout = LayOutForm(width(), height(), lineHeight_, complete);
  Place(*headerText_, layout.header);
  Place(*noteGroup_, layout.noteGroup);
  Place(*notesEdit_, layout.notes);
  if (complete) {
    Place(*attachmentGroup_, layout.attachmentGroup);
    Place(*attachmentList_, layout.attachments);
  }
  attachmentGroup_->setVisible(complete);
  attachmentList_->setVisible(complete);
  update();
}

void CMyFormView::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  LayoutForm();
}

void CMyFormView::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
    lineHeight_ = 0;
    LayoutForm();
  }
}

}  // namespace updown
