#include "transfers/transfer_model.h"

#include <QIcon>
#include <utility>

#include "resources/qt/texts.h"
#include "widgets/icons.h"

namespace updown {
namespace {

struct Heading {
  StringId text;
  Qt::AlignmentFlag alignment;
};

constexpr std::array<Heading, kStatusColumns> kHeadings{{
    {StringId::SourceEnd, Qt::AlignLeft},
    {StringId::TargetEnd, Qt::AlignLeft},
    {StringId::Transferred, Qt::AlignRight},
    {StringId::Progress, Qt::AlignRight},
    {StringId::TransferRate, Qt::AlignRight},
    {StringId::TimeRemaining, Qt::AlignRight},
}};

constexpr std::array<Icon, kRowImages> kImageIcons{Icon::Upload, Icon::Download, Icon::Finished,
                                                   Icon::Failed, Icon::Stopped};

// A tip that looks like markup is taken for it, and names come from the service.
QString PlainTip(const QString& text) {
  return text.isEmpty() ? text
                        : QStringLiteral("<span>%1</span>")
                              .arg(text.toHtmlEscaped().replace(u'\n', QLatin1String("<br>")));
}

}  // namespace

RowImage ImageOfState(TransferState state, std::uint32_t direction, RowImage otherwise) {
  switch (state) {
    case TransferState::Queued:
      return direction == 1 ? RowImage::WaitingUpload : RowImage::WaitingDownload;
    case TransferState::Finished:
      return RowImage::Finished;
    case TransferState::Failed:
      return RowImage::Failed;
    case TransferState::Stopped:
      return RowImage::Stopped;
  }
  return otherwise;
}

TransferModel::TransferModel(QObject* parent) : QAbstractTableModel(parent) {}

void TransferModel::Append(const TaskPointer& task, Texts texts, RowImage image) {
  const int row = rowCount();
  beginInsertRows({}, row, row);
  rows_.push_back({task->id, task, std::move(texts), image, {}});
  rowOfTask_.try_emplace(task->id, row);
  endInsertRows();
}

void TransferModel::Remove(int row) {
  if (!Holds(row)) {
    return;
  }
  beginRemoveRows({}, row, row);
  rows_.erase(rows_.begin() + row);
  rowOfTask_.clear();
  for (int each = 0; each < rowCount(); ++each) {
    rowOfTask_.try_emplace(At(each).id, each);
  }
  endRemoveRows();
}

TaskPointer TransferModel::TaskAt(int row) const {
  return Holds(row) ? At(row).task.lock() : nullptr;
}

int TransferModel::RowOfTask(TaskId id) const {
  const auto found = rowOfTask_.find(id);
  return found == rowOfTask_.end() ? -1 : found->second;
}

const QString& TransferModel::TextAt(int row, StatusColumn column) const {
  return At(row).texts[static_cast<std::size_t>(column)];
}

void TransferModel::SetText(int row, StatusColumn column, const QString& text) {
  QString& held = At(row).texts[static_cast<std::size_t>(column)];
  if (held != text) {
    held = text;
    const QModelIndex cell = index(row, static_cast<int>(column));
    Q_EMIT dataChanged(cell, cell);
  }
}

void TransferModel::SetDetails(int row, const QString& details) { At(row).details = details; }

QString TransferModel::TipText(int row, StatusColumn column) const {
  const QString& details = At(row).details;
  return column == StatusColumn::Transferred && !details.isEmpty() ? details : TextAt(row, column);
}

RowImage TransferModel::ImageAt(int row) const { return At(row).image; }

void TransferModel::SetImage(int row, RowImage image) {
  if (std::exchange(At(row).image, image) != image) {
    Q_EMIT dataChanged(index(row, 0), index(row, 0), {Qt::DecorationRole});
  }
}

void TransferModel::Touch(int row) {
  if (Holds(row)) {
    Q_EMIT dataChanged(index(row, 0), index(row, kStatusColumns - 1));
  }
}

int TransferModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int TransferModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : kStatusColumns;
}

// A bar is painted over the Progress cell and is no text; a screen reader gets its percentage.
QVariant TransferModel::AccessibleText(int row, StatusColumn column) const {
  const QString& text = TextAt(row, column);
  const TaskPointer task = TaskAt(row);
  if (column != StatusColumn::Progress || !text.isEmpty() || !task || task->childRecord) {
    return text;
  }
  const std::uint32_t total = task->record->totalBytes;
  if (total == 0) {
    return text;
  }
  return QString::number(100.0 * task->record->doneBytes / total, 'f', 2) + u'%';
}

QVariant TransferModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || !Holds(index.row())) {
    return {};
  }
  const auto column = static_cast<StatusColumn>(index.column());
  switch (role) {
    case Qt::DisplayRole:
      return TextAt(index.row(), column);
    case Qt::ToolTipRole:  // paths and the texts of failures are longer than their cells
      return index.column() <= 2 ? QVariant(PlainTip(TipText(index.row(), column))) : QVariant();
    case Qt::DecorationRole:
      return index.column() != 0
                 ? QVariant()
                 : QVariant(LoadIcon(kImageIcons[static_cast<std::size_t>(At(index.row()).image)]));
    case Qt::TextAlignmentRole:
      return QVariant::fromValue<int>(
          kHeadings[static_cast<std::size_t>(index.column())].alignment | Qt::AlignVCenter);
    case Qt::AccessibleTextRole:
      return AccessibleText(index.row(), column);
    default:
      return {};
  }
}

bool TransferModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (!index.isValid() || (role != Qt::EditRole && role != Qt::DisplayRole)) {
    return false;
  }
  SetText(index.row(), static_cast<StatusColumn>(index.column()), value.toString());
  return true;
}

QVariant TransferModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section < 0 || section >= kStatusColumns) {
    return {};
  }
  const Heading& heading = kHeadings[static_cast<std::size_t>(section)];
  switch (role) {
    case Qt::DisplayRole:
      return Text(heading.text);
    case Qt::TextAlignmentRole:
      return QVariant::fromValue<int>(heading.alignment | Qt::AlignVCenter);
    default:
      return {};
  }
}

}  // namespace updown
