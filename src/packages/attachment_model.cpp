#include "packages/attachment_model.h"

#include <array>
#include <utility>

#include "platform/qt/text.h"
#include "resources/qt/texts.h"
#include "widgets/icons.h"

namespace updown {
namespace {

constexpr std::array<StringId, attachment_column::kCount> kAttachmentHeadings{
    StringId::Name, StringId::Size, StringId::Type, StringId::Created, StringId::Save,
};

}  // namespace

AttachmentModel::AttachmentModel(QObject* parent)
    : ReportModel(kAttachmentHeadings, parent),
      folderImage_(LoadIcon(Icon::Folder)),
      fileImage_(LoadIcon(Icon::File)) {}

QVariant AttachmentModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || !HasRow(index.row())) {
    return {};
  }
  const int column = index.column();
  switch (role) {
    case Qt::DisplayRole:
      return column == attachment_column::kSave
                 ? Text(kAttachmentHeadings[attachment_column::kSave])
                 : ToQString(AttachmentText(Record(index.row()), column));
    case Qt::TextAlignmentRole:
      return QVariant::fromValue(
          (column == attachment_column::kSize ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    case Qt::DecorationRole:
      return column == attachment_column::kName ? Decoration(index.row()) : QVariant();
    default:
      return {};
  }
}

QVariant AttachmentModel::Decoration(int row) const {
  return Record(row).type == kEntryFile ? fileImage_ : folderImage_;
}

bool AttachmentModel::removeRows(int row, int count, const QModelIndex& parent) {
  if (parent.isValid() || count <= 0 || row < 0 || count > RowCount() - row) {
    return false;
  }
  beginRemoveRows({}, row, row + count - 1);
  rows_.erase(rows_.begin() + row, rows_.begin() + row + count);
  endRemoveRows();
  return true;
}

int AttachmentModel::Append(AttachmentRecord record) {
  const int row = RowCount();
  beginInsertRows({}, row, row);
  rows_.push_back(std::move(record));
  endInsertRows();
  return row;
}

void AttachmentModel::Sort(int column, int direction) {
  Reorder(
      [&](int a, int b) { return CompareAttachments(Record(b), Record(a), column, direction) > 0; },
      [this](const std::vector<int>& order) {
        std::vector<AttachmentRecord> sorted;
        sorted.reserve(rows_.size());
        for (const int old : order) {
          sorted.push_back(std::move(rows_.at(static_cast<std::size_t>(old))));
        }
        rows_ = std::move(sorted);
      });
}

}  // namespace updown
