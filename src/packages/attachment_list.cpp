#include "packages/attachment_list.h"

#include <QHeaderView>
#include <QMenu>
#include <array>

#include "platform/qt/text.h"
#include "resources/qt/texts.h"
#include "resources/string_id.h"

namespace updown {
namespace {

// Size, type and time have no width: the tip tells them.
constexpr std::array<int, attachment_column::kCount> kColumnWidths{350, 0, 0, 0, 50};

}  // namespace

AttachmentList::AttachmentList(QWidget* parent) : CLinkListCtrl(parent) {
  setObjectName(QStringLiteral("attachmentList"));
  setAccessibleName(Text(StringId::GroupAttachments));
  header()->setStretchLastSection(false);
  header()->setMinimumSectionSize(0);
  setHeaderHidden(true);
  setModel(&model_);
  for (int column = 0; column < attachment_column::kCount; ++column) {
    const int width = kColumnWidths.at(static_cast<std::size_t>(column));
    setColumnWidth(column, width);
    setColumnHidden(column, width == 0);
  }
  connect(this, &CLinkListCtrl::CellClicked, this, &AttachmentList::OnCellClicked);
  connect(this, &CLinkListCtrl::RowActivated, this, &AttachmentList::SaveSelected);
  connect(this, &RowListView::RowMenuRequested, this,
          [this](int, const QPoint& globalPosition) { ShowMenu(globalPosition); });
}

void AttachmentList::Show(const std::string& package, const PackageFiles& files) {
  std::vector<AttachmentRecord> records;
  records.reserve(files.entries.size());
  for (const DirectoryEntry& entry : files.entries) {
    records.push_back({package, entry, files.removing.contains(entry.name)});
  }
  if (records == model_.Records()) {
    return;
  }
  const AttachmentRecord* selected = model_.Find(SelectedRow());
  const std::string path = selected == nullptr ? std::string() : selected->Path();
  DeleteAllTips();
  model_.SetRecords(std::move(records));
  for (int row = 0; row < model_.rowCount(); ++row) {
    SetCellTip(row, attachment_column::kName, ToQString(AttachmentTip(model_.Find(row)->entry)));
    AddLink(row, attachment_column::kSave);
    if (model_.Find(row)->Path() == path) {
      SelectRow(row);
    }
  }
}

void AttachmentList::OnCellClicked(int row, int column) {
  InvalidateCell(lastRow, lastColumn);
  InvalidateCell(row, column);
  lastRow = row;
  lastColumn = column;
  if (column == attachment_column::kSave) {
    SaveSelected();
  }
}

void AttachmentList::SaveSelected() {
  if (const AttachmentRecord* file = model_.Find(SelectedRow())) {
    Q_EMIT SaveWanted(AttachmentRecord(*file));
  } else {
    Q_EMIT TransfersWanted();
  }
}

void AttachmentList::ShowMenu(const QPoint& globalPosition) {
  const AttachmentRecord* file = model_.Find(SelectedRow());
  if (file == nullptr) {
    return;
  }
  auto* menu = new QMenu(this);
  menu->setObjectName(QStringLiteral("attachmentMenu"));
  menu->setAttribute(Qt::WA_DeleteOnClose);
  // The file that the menu was opened on, whatever the list shows by then.
  const QAction* save = menu->addAction(Text(StringId::MenuFileSave));
  connect(save, &QAction::triggered, this, [this, record = *file] { Q_EMIT SaveWanted(record); });
  const QAction* remove = menu->addAction(Text(StringId::MenuFileDelete));
  connect(remove, &QAction::triggered, this,
          [this, record = *file] { Q_EMIT DeleteWanted(record); });
  menu->popup(globalPosition);
}

}  // namespace updown
