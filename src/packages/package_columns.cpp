#include "packages/package_columns.h"

namespace updown {

PackageListColumns::PackageListColumns(PackageArea& area, QObject* parent)
    : QSortFilterProxyModel(parent), area_(area) {
  setSortCaseSensitivity(Qt::CaseInsensitive);
  setSourceModel(&area);
  connect(&area, &PackageArea::HeadersRead, this, [this] {
    if (const auto wanted = std::exchange(waiting_, std::nullopt)) {
      QSortFilterProxyModel::sort(wanted->first, wanted->second);
    }
  });
}

void PackageListColumns::sort(int column, Qt::SortOrder order) {
  waiting_.reset();
  if (column < 0 || area_.ReadHeaders()) {
    QSortFilterProxyModel::sort(column, order);
  } else {
    waiting_ = {column, order};
  }
}

bool PackageListColumns::filterAcceptsColumn(int column, const QModelIndex& parent) const {
  Q_UNUSED(parent);  // the root too: who counts columns may ask for any
  return column != package_column::kName;
}

PackageTreeColumns::PackageTreeColumns(PackageArea& area, QObject* parent)
    : QSortFilterProxyModel(parent) {
  setSourceModel(&area);
}

QVariant PackageTreeColumns::headerData(int section, Qt::Orientation orientation, int role) const {
  return section == 0 && orientation == Qt::Horizontal
             ? sourceModel()->headerData(package_column::kName, orientation, role)
             : QVariant();
}

bool PackageTreeColumns::filterAcceptsColumn(int column, const QModelIndex& parent) const {
  return column == (parent.isValid() ? package_column::kName : 0);
}

}  // namespace updown
