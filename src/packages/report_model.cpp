#include "packages/report_model.h"

#include <algorithm>
#include <numeric>

#include "resources/qt/texts.h"

namespace updown {

ReportModel::ReportModel(std::span<const StringId> headings, QObject* parent)
    : QAbstractTableModel(parent), headings_(headings) {}

int ReportModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : RowCount();
}

int ReportModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(headings_.size());
}

QVariant ReportModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 ||
      section >= columnCount()) {
    return QAbstractTableModel::headerData(section, orientation, role);
  }
  return Text(headings_[static_cast<std::size_t>(section)]);
}

void ReportModel::Reorder(const std::function<bool(int, int)>& isBefore,
                          const std::function<void(const std::vector<int>&)>& apply) {
  Q_EMIT layoutAboutToBeChanged({}, VerticalSortHint);
  std::vector<int> order(static_cast<std::size_t>(RowCount()));
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), isBefore);
  apply(order);

  std::vector<int> newRowOf(order.size());
  for (std::size_t row = 0; row < order.size(); ++row) {
    newRowOf.at(static_cast<std::size_t>(order[row])) = static_cast<int>(row);
  }
  const QModelIndexList before = persistentIndexList();
  QModelIndexList after;
  for (const QModelIndex& kept : before) {
    after.append(index(newRowOf.at(static_cast<std::size_t>(kept.row())), kept.column()));
  }
  changePersistentIndexList(before, after);
  Q_EMIT layoutChanged({}, VerticalSortHint);
}

}  // namespace updown
