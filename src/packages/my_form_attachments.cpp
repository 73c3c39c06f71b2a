#include <QMenu>
#include <array>

#include "localdata/file_names.h"
#include "packages/my_form_view.h"
#include "platform/qt/text.h"
#include "resources/qt/texts.h"
#include "service/result_codes.h"
#include "widgets/busy_pointer.h"
#include "widgets/message_boxes.h"

// The attachment list of the form, and what starts from it.

namespace updown {
namespace {

// Size, type and time have no width: the tip tells them.
constexpr std::array<int, attachment_column::kCount> kAttachmentColumnWidths{350, 0, 0, 0, 50};

}  // namespace

void CMyFormView::InitAttachmentList() {
  attachmentList_->setHeader(headerCtrl_);
  headerCtrl_->setStretchLastSection(false);
  headerCtrl_->setMinimumSectionSize(0);
  attachmentList_->setHeaderHidden(true);
  attachmentList_->setModel(attachmentModel_);
  for (int column = 0; column < attachment_column::kCount; ++column) {
    const int width = kAttachmentColumnWidths.at(static_cast<std::size_t>(column));
    attachmentList_->setColumnWidth(column, width);
    attachmentList_->setColumnHidden(column, width == 0);
  }
  connect(attachmentList_, &CLinkListCtrl::CellClicked, this, &CMyFormView::OnCellClicked);
  connect(attachmentList_, &CLinkListCtrl::RowActivated, this, &CMyFormView::ActivateAttachment);
  connect(attachmentList_, &CLinkListCtrl::RowMenuRequested, this,
          [this](int, const QPoint& globalPosition) { ShowRowMenu(globalPosition); });
  connect(headerCtrl_, &QHeaderView::sectionClicked, this, &CMyFormView::OnColumnClicked);
}

void CMyFormView::AddAttachmentRow(const DirectoryEntry& entry) {
  const int row = attachmentModel_->Append(AttachmentRecord(entry));
  attachmentList_->SetCellTip(row, attachment_column::kName,
                              ToQString(AttachmentTip(attachmentModel_->Record(row))));
  attachmentList_->AddLink(row, attachment_column::kSave);
}

void CMyFormView::ClearAttachments() { attachmentList_->DeleteAllItems(); }

// Tips are kept by position; after rows have moved each row gets its own again.
void CMyFormView::ResetTips() {
  attachmentList_->DeleteAllTips();
  for (int row = 0; row < attachmentModel_->rowCount(); ++row) {
    attachmentList_->SetCellTip(row, attachment_column::kName,
                                ToQString(AttachmentTip(attachmentModel_->Record(row))));
  }
}

void CMyFormView::OnCellClicked(int row, int column) {
  attachmentList_->InvalidateCell(attachmentList_->lastRow, attachmentList_->lastColumn);
  attachmentList_->InvalidateCell(row, column);
  attachmentList_->lastRow = row;
  attachmentList_->lastColumn = column;
  if (column == attachment_column::kSave) {
    ActivateAttachment();
  }
}

void CMyFormView::ActivateAttachment() {
  if (!attachmentModel_->HasRow(attachmentList_->SelectedRow()) || SaveSelectedAttachment()) {
    Q_EMIT TransfersWanted();
  }
}

// True if the user has been answered: by a box, or by a task that was made.
bool CMyFormView::SaveSelectedAttachment() {
  const int row = attachmentList_->SelectedRow();
  if (!attachmentModel_->HasRow(row)) {
    return false;
  }
  const std::u16string name = Utf8ToWideName(attachmentModel_->Record(row).name);
  if (downloads_.StreamLimitReached()) {
    ShowNotice(window(), StringId::StreamLimit);
    return true;
  }
  if (name.empty()) {
    return false;
  }
  const std::u16string path = PathOf(name);
  const std::u16string_view localName = LastComponent(name);
  if (localName.empty() || !FitsPath(path)) {
    area_.ReportResult(static_cast<std::int64_t>(localName.empty() ? StringId::BadCharacters
                                                                   : StringId::InvalidParameters));
    return true;
  }
  return downloads_.IsDuplicate(path) ||
         downloads_.SaveFile(WideToUtf8Name(localName), WideToUtf8Name(path));
}

std::u16string CMyFormView::PathOf(const std::u16string& name) const {
  return currentFolder_ == "/" ? u"/" + name : Utf8ToWideName(currentFolder_) + u"/" + name;
}

// A name that could lead out of its folder is not deleted by it.
void CMyFormView::DeleteSelectedAttachments() {
  const int row = attachmentList_->SelectedRow();
  if (!attachmentModel_->HasRow(row)) {
    return;
  }
  const std::u16string name = Utf8ToWideName(attachmentModel_->Record(row).name);
  if (name.empty()) {
    return;
  }
  const std::u16string path = PathOf(name);
  if (LastComponent(name) != name || !FitsPath(path)) {
    area_.ReportResult(static_cast<std::int64_t>(FitsPath(path) ? StringId::BadCharacters
                                                                : StringId::InvalidParameters));
    return;
  }
  const BusyPointer busy;
  if (area_.RemoveFile(path) == result::kOk) {
    attachmentList_->SelectRow(-1);  // else the view would select the next row
    attachmentList_->DeleteItem(row);
    ResetTips();
  }
}

void CMyFormView::OnColumnClicked(int column) {
  attachmentSortDirection_ = -attachmentSortDirection_;
  if (column == attachment_column::kSave) {
    ActivateAttachment();
    return;
  }
  attachmentSortColumn_ = column;
  sortAscending_ = column != sortColumn_ || !sortAscending_;
  sortColumn_ = column;
  headerCtrl_->SetSortColumn(column);
  attachmentModel_->Sort(attachmentSortColumn_, attachmentSortDirection_);
  ResetTips();
}

void CMyFormView::ShowRowMenu(const QPoint& globalPosition) {
  auto* menu = new QMenu(this);
  menu->setObjectName(QStringLiteral("attachmentMenu"));
  menu->setAttribute(Qt::WA_DeleteOnClose);
  const QAction* save = menu->addAction(Text(StringId::MenuFileSave));
  connect(save, &QAction::triggered, this, &CMyFormView::ActivateAttachment);
  const QAction* remove = menu->addAction(Text(StringId::MenuFileDelete));
  connect(remove, &QAction::triggered, this, [this] {
    if (Confirm(window(), StringId::ConfirmDelete)) {
      DeleteSelectedAttachments();
    }
  });
  menu->popup(globalPosition);
}

}  // namespace updown
