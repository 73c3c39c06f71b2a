#include "packages/package_columns.h"

#include <QScopedValueRollback>
#include <utility>

namespace updown {

PackageListColumns::PackageListColumns(PackageArea& area, QObject* parent)
    : QSortFilterProxyModel(parent), area_(area) {
  setSortCaseSensitivity(Qt::CaseInsensitive);
  setSourceModel(&area);
  connect(&area, &PackageArea::HeadersRead, this, [this] {
    for (const auto& work : std::exchange(waiting_, {})) {
      work();
    }
  });
}

void PackageListColumns::WhenRead(std::function<void()> work) {
  if (area_.ReadHeaders()) {
    work();
  } else {
    waiting_.push_back(std::move(work));
  }
}

void PackageListColumns::sort(int column, Qt::SortOrder order) {
  WhenRead([this, column, order] { QSortFilterProxyModel::sort(column, order); });
}

void PackageListColumns::SetFilter(const QString& text) {
  WhenRead([this, text] {
    const QScopedValueRollback filtering(filtering_, true);
    filter_ = text;
    invalidateRowsFilter();
  });
}

bool PackageListColumns::filterAcceptsRow(int row, const QModelIndex& parent) const {
  bool found = filter_.isEmpty() || !parent.isValid();
  for (int column = 0; column < package_column::kName && !found; ++column) {
    const QString text = area_.index(row, column, parent).data().toString();
    found = text.contains(filter_, Qt::CaseInsensitive);
  }
  return found;
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
