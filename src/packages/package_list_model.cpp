#include "packages/package_list_model.h"

#include <utility>

#include "widgets/icons.h"

namespace updown {
namespace {

constexpr std::array<StringId, package_column::kCount> kPackageHeadings{
    StringId::TimeReceived, StringId::From, StringId::To, StringId::Subject, StringId::Status,
};

}  // namespace

PackageRow::PackageRow(const DirectoryEntry& entry, TreeItem item)
    : name(entry.name), treeItem(item) {}

PackageListModel::PackageListModel(QObject* parent)
    : ReportModel(kPackageHeadings, parent), image_(LoadIcon(Icon::Folder)) {}

QVariant PackageListModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || !HasRow(index.row())) {
    return {};
  }
  if (role == Qt::DisplayRole) {
    return Cell(index.row(), index.column());
  }
  if (role == Qt::DecorationRole && index.column() == 0) {
    return image_;
  }
  return {};
}

const PackageRow& PackageListModel::Row(int row) const { return rows_.at(Place(row)); }

void PackageListModel::SetCells(int row, const PackageCells& cells) {
  PackageCells& shown = rows_.at(Place(row)).cells;
  if (shown != cells) {
    shown = cells;
    Q_EMIT dataChanged(index(row, 0), index(row, package_column::kCount - 1), {Qt::DisplayRole});
  }
}

void PackageListModel::AddOnTop(PackageRow row) {
  beginInsertRows({}, 0, 0);
  rows_.push_back(std::move(row));
  endInsertRows();
}

void PackageListModel::RemoveRow(int row) {
  beginRemoveRows({}, row, row);
  rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(Place(row)));
  endRemoveRows();
}

void PackageListModel::Clear() {
  beginResetModel();
  rows_.clear();
  endResetModel();
}

void PackageListModel::Sort(int column, bool ascending) {
  Reorder([&](int a, int b) { return CompareRows(Row(a), Row(b), column, ascending) < 0; },
          [this](const std::vector<int>& order) {
            std::vector<PackageRow> sorted;
            sorted.reserve(rows_.size());
            for (auto old = order.rbegin(); old != order.rend(); ++old) {
              sorted.push_back(std::move(rows_.at(Place(*old))));
            }
            rows_ = std::move(sorted);
          });
}

int CompareRows(const PackageRow& a, const PackageRow& b, int column, bool ascending) {
  const QString& textA = a.cells.at(static_cast<std::size_t>(column));
  const QString& textB = b.cells.at(static_cast<std::size_t>(column));
  return ascending ? textA.compare(textB, Qt::CaseInsensitive)
                   : textB.compare(textA, Qt::CaseInsensitive);
}

}  // namespace updown
