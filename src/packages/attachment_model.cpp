#include "packages/attachment_model.h"

#include <QDateTime>
#include <QLocale>
#include <array>
#include <tuple>
#include <utility>

#include "localdata/file_names.h"
#include "packages/file_type_names.h"
#include "platform/qt/text.h"
#include "resources/qt/texts.h"
#include "resources/string_id.h"
#include "widgets/icons.h"
#include "widgets/link_delegate.h"
#include "widgets/size_texts.h"

namespace updown {
namespace {

constexpr std::array kHeadings{StringId::Name, StringId::Size, StringId::Type, StringId::Created,
                               StringId::Save};
constexpr std::uint64_t kKiloByte = 1024;
static_assert(kHeadings.size() == attachment_column::kCount);

QString Heading(int column) { return Text(kHeadings.at(static_cast<std::size_t>(column))); }

QVariant Value(const DirectoryEntry& entry, int column) {
  switch (column) {
    case attachment_column::kName:
      return ToQString(Utf8ToWideName(entry.name));
    case attachment_column::kSize:
      return entry.size;
    case attachment_column::kType:
      return ToQString(FileTypeName(Utf8ToWideName(entry.name)));
    case attachment_column::kTime:
      return entry.modificationTime;
    default:
      return {};
  }
}

QString CellText(const DirectoryEntry& entry, int column) {
  switch (column) {
    case attachment_column::kSize:
      return QString::fromStdString(FormatSize(entry.size));
    case attachment_column::kTime:
      return QDateTime::fromSecsSinceEpoch(entry.modificationTime).toString(u"yyyy-MM-dd HH:mm");
    case attachment_column::kSave:
      return Heading(column);
    default:
      return Value(entry, column).toString();
  }
}

// A line for each column, the size to the byte.
QString Tip(const DirectoryEntry& entry) {
  QStringList lines;
  for (int column = 0; column < attachment_column::kSave; ++column) {
    QString text = CellText(entry, column);
    if (column == attachment_column::kSize && entry.size >= kKiloByte) {  // below it is to the byte
      const QString bytes = QLocale(QLocale::English).toString(entry.size);
      text = Text(StringId::SizeInBytes).arg(text, bytes).trimmed();
    }
    lines << Heading(column) + Text(StringId::Colon) + u' ' + text;
  }
  return lines.join(u'\n');
}

}  // namespace

bool AttachmentRecord::operator==(const AttachmentRecord& other) const {
  const auto shown = [](const AttachmentRecord& record) {
    const DirectoryEntry& listed = record.entry;
    return std::tie(record.package, record.removing, listed.name, listed.size,
                    listed.modificationTime);
  };
  return shown(*this) == shown(other);
}

AttachmentModel::AttachmentModel(QObject* parent)
    : QAbstractTableModel(parent), image_(LoadIcon(Icon::File)) {}

void AttachmentModel::SetRecords(std::vector<AttachmentRecord> records) {
  beginResetModel();
  records_ = std::move(records);
  endResetModel();
}

const AttachmentRecord& AttachmentModel::At(const QModelIndex& index) const {
  return records_.at(static_cast<std::size_t>(index.row()));
}

int AttachmentModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(records_.size());
}

int AttachmentModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : attachment_column::kCount;
}

QVariant AttachmentModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
    return {};
  }
  const DirectoryEntry& entry = At(index).entry;
  const int column = index.column();
  switch (role) {
    case Qt::DisplayRole:
      return CellText(entry, column);
    case kValueRole:
      return Value(entry, column);
    case Qt::ToolTipRole:
      return Tip(entry);
    case kLinkRole:
      return column == attachment_column::kSave;
    case Qt::AccessibleTextRole:
      return column == attachment_column::kSave
                 ? Text(StringId::SaveNamed).arg(CellText(entry, attachment_column::kName))
                 : QVariant();
    case Qt::TextAlignmentRole:
      return QVariant::fromValue(
          (column == attachment_column::kSize ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    case Qt::DecorationRole:
      return column == attachment_column::kName ? QVariant(image_) : QVariant();
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
  return index.isValid() && At(index).removing ? flags & ~Qt::ItemIsEnabled : flags;
}

}  // namespace updown
