#include "packages/my_form_view.h"

#include <QEvent>
#include <algorithm>

#include "engine/frame_messages.h"
#include "localdata/file_names.h"
#include "packages/form_layout.h"
#include "packages/group_frame.h"
#include "packages/header_text.h"
#include "platform/qt/text.h"
#include "widgets/boxes.h"

namespace updown {
namespace {

void Place(QWidget& widget, const Box& box) {
  widget.setGeometry(box.left, box.top, std::max(box.right - box.left, 0),
                     std::max(box.bottom - box.top, 0));
}

}  // namespace

CMyFormView::CMyFormView(FrameOperations& frame, QWidget* parent)
    : QWidget(parent),
      frame_(frame),
      headerText_(new HeaderLabel(this)),
      noteGroup_(new GroupFrame(this)),
      notesEdit_(new CEditNoMenu(this)),
      attachmentGroup_(new GroupFrame(this)),
      attachmentList_(new CLinkListCtrl(this)),
      attachmentModel_(new AttachmentModel(this)),
      headerCtrl_(new CSortHeaderCtrl(attachmentList_)),
      target_([this](const WindowMessage& message) { return WindowProc(message); }) {
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
}

CMyFormView::~CMyFormView() = default;

void CMyFormView::WireWindows(WindowHandle frame) { frameWindow_ = frame; }

void CMyFormView::InitForm() {
  SetHeader({});
  InitAttachmentList();
  LayoutForm();
}

MessageResult CMyFormView::WindowProc(const WindowMessage& message) {
  switch (message.number) {
    case frame_message::kAddEntry:
      if (const auto* entry = PointerFrom<const DirectoryEntry>(message.lParam); entry != nullptr) {
        AddAttachmentRow(static_cast<LongParam>(message.wParam), *entry);
      }
      break;
    case frame_message::kClearRows:
      ClearAttachments();
      break;
    case frame_message::kCurrentFolder:
      SetCurrentFolder(PointerFrom<const std::u16string>(message.lParam));
      break;
    case frame_message::kShowPackage:
      if (const auto* name = PointerFrom<const std::u16string>(message.lParam); name != nullptr) {
        ApplyPackage(*name);
      }
      break;
    default:
      break;
  }
  return 0;
}

void CMyFormView::SetCurrentFolder(const std::u16string* path) {
  currentFolder_ = path == nullptr ? "/" : WideToUtf8Name(*path);
}

// The empty name clears the form and leaves its layout as it is.
void CMyFormView::ApplyPackage(const std::u16string& name) {
  PackageHeader header;
  if (!name.empty()) {
    const PackageFiles files = FindPackageFiles(frame_.Cache(), name);
    packageStatus_ = files.status;
    if (!files.readPath.empty()) {
      header = ReadPackageHeader(files.readPath, frame_.Launch().CodePage());
    }
  }
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

bool CMyFormView::HaveFrame() {
  if (!IsWindow(frameWindow_)) {
    frameWindow_ = frame_.FrameWindow();
  }
  return IsWindow(frameWindow_);
}

}  // namespace updown
