#pragma once

#include <QAbstractTableModel>
#include <functional>
#include <span>
#include <vector>

#include "resources/string_id.h"

namespace updown {

// What the models of the views' lists share: rows without children under fixed headings.
class ReportModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  ReportModel(std::span<const StringId> headings, QObject* parent);

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  bool HasRow(int row) const { return row >= 0 && row < RowCount(); }

 protected:
  virtual int RowCount() const = 0;

  // Sorts stably. `isBefore` takes two present row numbers; `apply` brings the rows into the order
  // found, which names the old row of each new one. Selection and current row follow their rows.
  void Reorder(const std::function<bool(int, int)>& isBefore,
               const std::function<void(const std::vector<int>&)>& apply);

 private:
  std::span<const StringId> headings_;
};

}  // namespace updown
