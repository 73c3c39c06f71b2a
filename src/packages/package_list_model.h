#pragma once

#include <QIcon>
#include <QString>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "packages/report_model.h"
#include "packages/tree_item.h"
#include "service/operations.h"

namespace updown {

namespace package_column {
inline constexpr int kTime = 0;
inline constexpr int kFrom = 1;
inline constexpr int kTo = 2;
inline constexpr int kSubject = 3;
inline constexpr int kStatus = 4;
inline constexpr int kCount = 5;
}  // namespace package_column

using PackageCells = std::array<QString, package_column::kCount>;

// One package of the list: its name, the tree's name for its item, and its texts.
struct PackageRow {
  PackageRow(const DirectoryEntry& entry, TreeItem item);

  std::string name;  // UTF-8
  TreeItem treeItem;
  PackageCells cells;
};

// The rows of the package list, top row first. Adding on top takes constant time.
class PackageListModel : public ReportModel {
  Q_OBJECT

 public:
  explicit PackageListModel(QObject* parent = nullptr);

  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

  const PackageRow& Row(int row) const;  // HasRow
  const QString& Cell(int row, int column) const {
    return Row(row).cells.at(static_cast<std::size_t>(column));
  }
  void SetCells(int row, const PackageCells& cells);

  void AddOnTop(PackageRow row);
  void RemoveRow(int row);
  void Clear();

  // By the texts of a column, without regard to case; equal texts keep their order.
  void Sort(int column, bool ascending);

 protected:
  int RowCount() const override { return static_cast<int>(rows_.size()); }

 private:
  std::size_t Place(int row) const { return rows_.size() - 1 - static_cast<std::size_t>(row); }

  std::vector<PackageRow> rows_;  // bottom row first
  QIcon image_;
};

// Negative, 0 or positive as A's text comes before, with or after B's in the given direction.
int CompareRows(const PackageRow& a, const PackageRow& b, int column, bool ascending);

}  // namespace updown
