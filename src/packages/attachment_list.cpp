#include "packages/attachment_list.h"

#include <algorithm>
#include <set>

#include "packages/column_header.h"
#include "resources/qt/texts.h"
#include "resources/string_id.h"
#include "widgets/link_delegate.h"

namespace updown {

AttachmentList::AttachmentList(PackageCommands& commands, QWidget* parent)
    : RowListView(parent),
      commands_(commands),
      save_(MakeAction(this, StringId::MenuFileSave, u"saveFile"_qs,
                       {Qt::Key_Enter, Qt::Key_Return})),
      delete_(MakeAction(this, StringId::MenuFileDelete, u"deleteFiles"_qs, {Qt::Key_Delete})) {
  setObjectName(u"attachmentList"_qs);
  setAccessibleName(Text(StringId::GroupAttachments));
  setSelectionMode(ExtendedSelection);
  sorted_.setSourceModel(&model_);
  sorted_.setSortRole(AttachmentModel::kValueRole);
  sorted_.setSortCaseSensitivity(Qt::CaseInsensitive);
  setModel(&sorted_);
  setHeader(new ColumnHeader({30, 10, 16, 18, 8}, attachment_column::kName, this));
  setSortingEnabled(true);
  auto* const links = new LinkDelegate(this);
  setItemDelegate(links);
  connect(links, &LinkDelegate::Activated, this,
          [this](const QModelIndex& index) { commands_.SaveFile(AttachmentRecord(At(index))); });
  connect(this, &QAbstractItemView::doubleClicked, save_, &QAction::trigger);
  connect(save_, &QAction::triggered, this, &AttachmentList::SaveSelected);
  connect(delete_, &QAction::triggered, this, [this] { commands_.DeleteFiles(Selected()); });
  addActions({save_, commands_.SaveAllAction(), delete_});
  UpdateActions();
}

const AttachmentRecord& AttachmentList::At(const QModelIndex& index) const {
  return model_.At(sorted_.mapToSource(index));
}

// Those that are not on their way out already.
std::vector<AttachmentRecord> AttachmentList::Selected() const {
  std::vector<AttachmentRecord> files;
  for (const QModelIndex& row : selectionModel()->selectedRows()) {
    if (!At(row).removing) {
      files.push_back(At(row));
    }
  }
  return files;
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
  std::set<std::string> selected;
  for (const QModelIndex& row : selectionModel()->selectedRows()) {
    selected.insert(At(row).Path());
  }
  const int current = currentIndex().row();
  const std::string path = current < 0 ? std::string() : At(currentIndex()).Path();
  const bool same = current >= 0 && At(currentIndex()).package == package;
  model_.SetRecords(std::move(records));
  int next = same ? std::min(current, RowCount() - 1) : -1;
  for (int row = 0; row < RowCount(); ++row) {
    const std::string& here = At(CellAt(row, 0)).Path();
    if (selected.contains(here)) {
      selectionModel()->select(CellAt(row, 0),
                               QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
    if (here == path) {
      next = row;
    }
  }
  // Where the keyboard was, or in the place of what has gone.
  selectionModel()->setCurrentIndex(CellAt(next, 0), QItemSelectionModel::NoUpdate);
  UpdateActions();
}

void AttachmentList::SaveSelected() {
  if (const auto files = Selected(); files.size() == 1) {
    commands_.SaveFile(files.front());
  }
}

void AttachmentList::selectionChanged(const QItemSelection& selected,
                                      const QItemSelection& deselected) {
  RowListView::selectionChanged(selected, deselected);
  UpdateActions();
}

void AttachmentList::UpdateActions() {
  const std::size_t count = Selected().size();
  save_->setEnabled(count == 1);
  delete_->setEnabled(count > 0);
}

}  // namespace updown
