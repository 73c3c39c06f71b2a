#include "packages/package_list.h"

#include <QScopedValueRollback>
#include <utility>

#include "packages/column_header.h"
#include "resources/qt/texts.h"
#include "resources/string_id.h"

namespace updown {
namespace {

constexpr int kInViewDelay = 50;  // ms

}  // namespace

PackageList::PackageList(PackageArea& area, PackageCommands& commands, QString service,
                         QWidget* parent)
    : RowListView(parent),
      area_(area),
      columns_(area),
      service_(std::move(service)),
      delete_(MakeAction(this, StringId::MenuPackageDelete, u"deletePackage"_qs,
                         {QKeySequence::Delete})) {
  setObjectName(u"packageList"_qs);
  setAccessibleName(Text(StringId::PackageListName));
  setModel(&columns_);
  setRootIndex(columns_.mapFromSource(area_.Root()));
  setHeader(new ColumnHeader({23, 20, 20, 40, 12}, package_column::kSubject, this));
  setSortingEnabled(true);
  addActions({commands.SaveAllAction(), delete_});
  connect(delete_, &QAction::triggered, this,
          [this, &commands] { commands.DeletePackage(area_.Selected()); });
  slow_.setSingleShot(true);
  inView_.setSingleShot(true);
  connect(&slow_, &QTimer::timeout, this, &PackageList::ShowConnection);
  connect(&inView_, &QTimer::timeout, this, &PackageList::TellRowsInView);
  FollowSorting();
  connect(&area_, &PackageArea::SelectionChanged, this, &PackageList::ShowSelection);
  connect(&area_, &PackageArea::HeaderChanged, this,
          [this] { delete_->setEnabled(!area_.IsBusy(area_.Selected())); });
  connect(&area_, &PackageArea::ConnectionChanged, this, &PackageList::FollowConnection);
  connect(&area_, &PackageArea::HeadersRead, this, [this] {
    ShowSelection();
    ShowConnection();
  });
  FollowConnection();
  ShowSelection();
}

// Headers that arrive can move the selected row too.
void PackageList::FollowSorting() {
  connect(&columns_, &QAbstractItemModel::layoutAboutToBeChanged, this, [this] {
    selectedInView_ = visualRect(CellAt(SelectedRow(), 0)).intersects(viewport()->rect());
  });
  connect(&columns_, &QAbstractItemModel::layoutChanged, this, [this] {
    if (selectedInView_) {
      scrollTo(CellAt(SelectedRow(), 0));
    }
    inView_.start(kInViewDelay);
  });
}

// What is selected and does not show any more shows again with its row.
void PackageList::SetFilter(const QString& text) {
  columns_.SetFilter(text);
  ShowSelection();
  ShowConnection();
}

void PackageList::selectionChanged(const QItemSelection& selected,
                                   const QItemSelection& deselected) {
  RowListView::selectionChanged(selected, deselected);
  if (!following_) {
    const QModelIndex row = columns_.index(SelectedRow(), 0, rootIndex());
    area_.Select(area_.NameAt(columns_.mapToSource(row)));
  }
}

void PackageList::ShowSelection() {
  const QScopedValueRollback following(following_, true);
  const QModelIndex row = columns_.mapFromSource(area_.IndexOf(area_.Selected()));
  if (row.row() != SelectedRow()) {
    SelectRow(row.row());
  }
  delete_->setEnabled(!area_.Selected().empty() && !area_.IsBusy(area_.Selected()));
  inView_.start(kInViewDelay);
}

// The first package shows itself.
void PackageList::rowsInserted(const QModelIndex& parent, int first, int last) {
  RowListView::rowsInserted(parent, first, last);
  inView_.start(kInViewDelay);
  if (last - first + 1 == RowCount() && columns_.Filter().isEmpty() && !columns_.Filtering()) {
    SelectRow(0);
  }
}

// The row below takes the place of one that goes; below the last one there is none. In the place of
// one that is filtered away stands nothing that the user has chosen.
void PackageList::rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) {
  if (const int row = SelectedRow(); row >= first && row <= last) {
    SelectRow(last + 1 < RowCount() && !columns_.Filtering() ? last + 1 : -1);
  }
  RowListView::rowsAboutToBeRemoved(parent, first, last);
  inView_.start(kInViewDelay);
}

void PackageList::FollowConnection() {
  if (area_.Refreshing()) {
    slow_.start(area_.Quiet());
  } else {
    slow_.stop();
  }
  ShowConnection();
}

void PackageList::ShowConnection() {
  const bool slow = area_.Refreshing() && !slow_.isActive();
  switch (area_.State()) {
    case PackageArea::Connection::Connecting:
      SetHint(slow ? Text(StringId::HintConnecting).arg(service_) : QString());
      break;
    case PackageArea::Connection::Lost:
      SetHint(Text(StringId::HintNotReached).arg(service_));
      break;
    case PackageArea::Connection::GivenUp:
      SetHint(Text(StringId::HintNotConnected).arg(service_));
      break;
    case PackageArea::Connection::There:
      SetHint(columns_.Filter().isEmpty() ? Text(StringId::EmptyHint).remove(u'\r')
                                          : Text(StringId::HintNoneFound));
      break;
  }
  viewport()->setCursor(slow ? Qt::BusyCursor : Qt::ArrowCursor);
}

void PackageList::TellRowsInView() {
  // The form shows the selected one even where sorting has moved its row out of sight.
  std::vector<std::string> packages{area_.Selected()};
  for (QModelIndex row = indexAt(QPoint(0, 0));
       row.isValid() && visualRect(row).top() < viewport()->height(); row = indexBelow(row)) {
    packages.push_back(area_.NameAt(columns_.mapToSource(row)));
  }
  area_.FetchFirst(std::move(packages));
}

void PackageList::resizeEvent(QResizeEvent* event) {
  RowListView::resizeEvent(event);
  inView_.start(kInViewDelay);
}

void PackageList::scrollContentsBy(int dx, int dy) {
  RowListView::scrollContentsBy(dx, dy);
  inView_.start(kInViewDelay);
}

}  // namespace updown
