#include "packages/attachment_model.h"

#include <array>
#include <utility>

#include "platform/qt/text.h"
#include "resources/qt/texts.h"
#include "resources/string_id.h"
#include "widgets/icons.h"

namespace updown {
namespace {

constexpr std::array kHeadings{StringId::Name, StringId::Size, StringId::Type, StringId::Created,
                               StringId::Save};
static_assert(kHeadings.size() == attachment_column::kCount);

QString Heading(int column) { return Text(kHeadings.at(static_cast<std::size_t>(column))); }

}  // namespace

AttachmentModel::AttachmentModel(QObject* parent)
    : QAbstractTableModel(parent),
      folderImage_(LoadIcon(Icon::Folder)),
      fileImage_(LoadIcon(Icon::File)) {}

void AttachmentModel::SetRecords(std::vector<AttachmentRecord> records) {
  beginResetModel();
  records_ = std::move(records);
  endResetModel();
}

const AttachmentRecord* AttachmentModel::Find(int row) const {
  return row >= 0 && row < rowCount() ? &records_.at(static_cast<std::size_t>(row)) : nullptr;
}

int AttachmentModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(records_.size());
}

int AttachmentModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : attachment_column::kCount;
}

QVariant AttachmentModel::data(const QModelIndex& index, int role) const {
  const AttachmentRecord* record = index.isValid() ? Find(index.row()) : nullptr;
  if (record == nullptr) {
    return {};
  }
  const int column = index.column();
  switch (role) {
    case Qt::DisplayRole:
      return column == attachment_column::kSave ? Heading(column)
                                                : ToQString(AttachmentText(record->entry, column));
    case Qt::TextAlignmentRole:
      return QVariant::fromValue(
          (column == attachment_column::kSize ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    case Qt::DecorationRole:
      return column != attachment_column::kName
                 ? QVariant()
                 : QVariant(record->entry.type == kEntryFile ? fileImage_ : folderImage_);
    default:
      return {};
  }
}

QVariant AttachmentModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 ||
      section >= attachment_column::kCount) {
    return QAbstractTableModel::headerData(section, orientation, role);
  }
  return Heading(section);
}

// A file that is being removed fades, until it has gone or the service has refused.
Qt::ItemFlags AttachmentModel::flags(const QModelIndex& index) const {
  const Qt::ItemFlags flags = QAbstractTableModel::flags(index);
  const AttachmentRecord* record = Find(index.row());
  return record != nullptr && record->removing ? flags & ~Qt::ItemIsEnabled : flags;
}

}  // namespace updown
