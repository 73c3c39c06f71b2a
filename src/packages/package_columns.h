#pragma once

#include <QSortFilterProxyModel>
#include <functional>
#include <vector>

#include "packages/package_area.h"

namespace updown {

// The area as the list shows it: all columns but the name, sorted and filtered as the user wants
// it, by the texts without regard to case. With very many packages both wait until the headers have
// been read.
class PackageListColumns : public QSortFilterProxyModel {
  Q_OBJECT

 public:
  explicit PackageListColumns(PackageArea& area, QObject* parent = nullptr);

  void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

  // Rows without this text in any column go; empty: none does.
  void SetFilter(const QString& text);
  const QString& Filter() const { return filter_; }
  // True while rows come and go because of another filter, not because of the service.
  bool Filtering() const { return filtering_; }

 protected:
  bool filterAcceptsRow(int row, const QModelIndex& parent) const override;
  bool filterAcceptsColumn(int column, const QModelIndex& parent) const override;

 private:
  void WhenRead(std::function<void()> work);

  PackageArea& area_;
  std::vector<std::function<void()>> waiting_;  // for the headers
  QString filter_;
  bool filtering_ = false;
};

// The area as the tree shows it: the root and the names.
class PackageTreeColumns : public QSortFilterProxyModel {
  Q_OBJECT

 public:
  explicit PackageTreeColumns(PackageArea& area, QObject* parent = nullptr);

  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 protected:
  bool filterAcceptsColumn(int column, const QModelIndex& parent) const override;
};

}  // namespace updown
