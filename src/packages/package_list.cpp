#include "packages/package_list.h"

#include <QHeaderView>
#include <QMenu>
#include <QScopedValueRollback>
#include <array>
#include <utility>

#include "platform/qt/text.h"
#include "resources/qt/texts.h"
#include "resources/string_id.h"

namespace updown {
namespace {

constexpr std::array kColumnWidths{160, 160, 160, 160, 80};
constexpr int kInViewDelay = 50;  // ms

}  // namespace

PackageList::PackageList(PackageArea& area, QString service, QWidget* parent)
    : RowListView(parent), area_(area), columns_(area), service_(std::move(service)) {
  setObjectName(QStringLiteral("packageList"));
  setAccessibleName(Text(StringId::PackageListName));
  setMinimumSize(1, 1);  // the pane can be made as small as its splitter lets it
  setModel(&columns_);
  setRootIndex(columns_.mapFromSource(area_.Root()));
  InitHeader();
  slow_.setSingleShot(true);
  inView_.setSingleShot(true);
  connect(&slow_, &QTimer::timeout, this, [this] { ShowConnection(true); });
  connect(&inView_, &QTimer::timeout, this, &PackageList::TellRowsInView);
  connect(&columns_, &QAbstractItemModel::layoutChanged, this,
          [this] { inView_.start(kInViewDelay); });
  connect(&area_, &PackageArea::SelectionChanged, this, &PackageList::ShowSelection);
  connect(&area_, &PackageArea::ConnectionChanged, this, &PackageList::FollowConnection);
  connect(this, &RowListView::RowMenuRequested, this,
          [this](int, const QPoint& globalPosition) { ShowMenu(globalPosition); });
  FollowConnection();
}

void PackageList::InitHeader() {
  header()->setObjectName(QStringLiteral("sortHeader"));
  header()->setSortIndicator(-1, Qt::AscendingOrder);  // else column 0 would be sorted at once
  header()->setSectionsMovable(false);
  header()->setStretchLastSection(false);
  header()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  setSortingEnabled(true);
  for (std::size_t column = 0; column < kColumnWidths.size(); ++column) {
    setColumnWidth(static_cast<int>(column), kColumnWidths.at(column));
  }
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
  inView_.start(kInViewDelay);
}

// The first package shows itself.
void PackageList::rowsInserted(const QModelIndex& parent, int first, int last) {
  RowListView::rowsInserted(parent, first, last);
  inView_.start(kInViewDelay);
  if (last - first + 1 == RowCount()) {
    SelectRow(0);
  }
}

// The row below takes the place of one that goes; below the last one there is none.
void PackageList::rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) {
  if (const int row = SelectedRow(); row >= first && row <= last) {
    SelectRow(last + 1 < RowCount() ? last + 1 : -1);
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
  ShowConnection(false);
}

void PackageList::ShowConnection(bool slow) {
  switch (area_.State()) {
    case PackageArea::Connection::Connecting:
      SetHint(slow ? Text(StringId::HintConnecting).arg(service_) : QString());
      break;
    case PackageArea::Connection::Lost:
      SetHint(Text(StringId::HintNotReached).arg(service_));
      break;
    case PackageArea::Connection::There:
      SetHint(Text(StringId::EmptyHint).remove(u'\r'));
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

void PackageList::ShowMenu(const QPoint& globalPosition) {
  auto* menu = new QMenu(this);
  menu->setObjectName(QStringLiteral("packageMenu"));
  menu->setAttribute(Qt::WA_DeleteOnClose);
  const QAction* refresh =
      menu->addAction(Text(StringId::MenuPackageRefresh) + QStringLiteral("\tF5"));
  connect(refresh, &QAction::triggered, this, [this] { area_.Refresh(AskedBy::Person); });
  const QAction* remove = menu->addAction(Text(StringId::MenuPackageDelete));
  connect(remove, &QAction::triggered, this,
          [this, name = FromUtf8(area_.Selected())] { Q_EMIT DeleteWanted(name); });
  menu->popup(globalPosition);
}

}  // namespace updown
