#include "widgets/accessible_rows.h"

#include <QAccessibleWidget>
#include <QAction>
#include <QHash>
#include <QHeaderView>
#include <QPersistentModelIndex>
#include <QPointer>

#include "widgets/link_delegate.h"
#include "widgets/progress_delegate.h"

namespace updown {
namespace {

// Items one below the other as the view shows them.
int CountRows(const QTreeView& view, const QModelIndex& parent) {
  const int rows = view.model()->rowCount(parent);
  const QModelIndex last = view.model()->index(rows - 1, 0, parent);
  return rows + (last.isValid() && view.isExpanded(last) ? CountRows(view, last) : 0);
}

QModelIndex CellAt(const QTreeView& view, int row, int column, const QModelIndex& parent) {
  const int rows = view.model()->rowCount(parent);
  const QModelIndex last = view.model()->index(rows - 1, 0, parent);
  return row < rows || !last.isValid() ? view.model()->index(row, column, parent)
                                       : CellAt(view, row - rows, column, last);
}

int RowOf(const QTreeView& view, const QModelIndex& index) {
  const QModelIndex parent = index.parent();
  return parent == view.rootIndex() ? index.row() : RowOf(view, parent) + 1 + index.row();
}

// Part of a view: a cell of a row, or one of the header. The toolkit owns what is registered.
class AccessiblePart : public QAccessibleInterface {
 public:
  explicit AccessiblePart(QTreeView* view) : view_(view) {}

  QObject* object() const override { return nullptr; }
  QAccessibleInterface* childAt(int, int) const override { return nullptr; }
  QAccessibleInterface* parent() const override {
    return view_ != nullptr ? QAccessible::queryAccessibleInterface(view_.data()) : nullptr;
  }
  QAccessibleInterface* child(int) const override { return nullptr; }
  int childCount() const override { return 0; }
  int indexOfChild(const QAccessibleInterface*) const override { return -1; }
  void setText(QAccessible::Text, const QString&) override {}

 protected:
  QPointer<QTreeView> view_;
};

class AccessibleHeading : public AccessiblePart {
 public:
  AccessibleHeading(QTreeView* view, int column) : AccessiblePart(view), column_(column) {}

  bool isValid() const override { return view_ != nullptr && column_ < view_->header()->count(); }
  QAccessible::Role role() const override { return QAccessible::ColumnHeader; }
  QString text(QAccessible::Text kind) const override {
    return isValid() && kind == QAccessible::Name
               ? view_->model()->headerData(column_, Qt::Horizontal).toString()
               : QString();
  }
  QRect rect() const override {
    const QHeaderView* header = isValid() ? view_->header() : nullptr;
    if (header == nullptr || header->isHidden()) {
      return {};
    }
    return {header->viewport()->mapToGlobal(QPoint(header->sectionViewportPosition(column_), 0)),
            QSize(header->sectionSize(column_), header->height())};
  }
  QAccessible::State state() const override {
    QAccessible::State state;
    state.invisible = rect().isEmpty();
    return state;
  }

 private:
  int column_;
};

class AccessibleCell : public AccessiblePart,
                       public QAccessibleTableCellInterface,
                       public QAccessibleActionInterface,
                       public QAccessibleValueInterface {
 public:
  AccessibleCell(QTreeView* view, const QModelIndex& index) : AccessiblePart(view), index_(index) {}

  bool isValid() const override { return view_ != nullptr && index_.isValid(); }
  QAccessible::Role role() const override;
  QString text(QAccessible::Text kind) const override;
  QRect rect() const override {
    const QRect cell = isValid() ? view_->visualRect(index_) : QRect();
    return cell.isEmpty() ? QRect()
                          : QRect(view_->viewport()->mapToGlobal(cell.topLeft()), cell.size());
  }
  QAccessible::State state() const override;
  void* interface_cast(QAccessible::InterfaceType type) override;

  bool isSelected() const override {
    return isValid() && view_->selectionModel()->isSelected(index_);
  }
  QList<QAccessibleInterface*> columnHeaderCells() const override {
    return isValid() ? QList{parent()->child(index_.column())} : QList<QAccessibleInterface*>{};
  }
  QList<QAccessibleInterface*> rowHeaderCells() const override { return {}; }
  int columnIndex() const override { return index_.column(); }
  int rowIndex() const override { return isValid() ? RowOf(*view_, index_) : -1; }
  int columnExtent() const override { return 1; }
  int rowExtent() const override { return 1; }
  QAccessibleInterface* table() const override { return parent(); }

  QStringList actionNames() const override {
    return IsLink() ? QStringList{pressAction(), setFocusAction()} : QStringList{setFocusAction()};
  }
  void doAction(const QString& actionName) override;
  QStringList keyBindingsForAction(const QString&) const override { return {}; }

  QVariant currentValue() const override { return qMax(0.0F, Percent().toFloat()); }
  void setCurrentValue(const QVariant&) override {}
  QVariant maximumValue() const override { return 100; }
  QVariant minimumValue() const override { return 0; }
  QVariant minimumStepSize() const override { return {}; }

 private:
  bool IsLink() const { return isValid() && index_.data(kLinkRole).toBool(); }
  QVariant Percent() const { return isValid() ? index_.data(kPercentRole) : QVariant(); }

  QPersistentModelIndex index_;
};

QAccessible::Role AccessibleCell::role() const {
  if (IsLink()) {
    return QAccessible::Link;
  }
  if (Percent().isValid()) {
    return QAccessible::ProgressBar;
  }
  return isValid() && view_->rootIsDecorated() ? QAccessible::TreeItem : QAccessible::Cell;
}

QString AccessibleCell::text(QAccessible::Text kind) const {
  if (!isValid()) {
    return {};
  }
  if (kind == QAccessible::Description) {
    return index_.data(Qt::AccessibleDescriptionRole).toString();
  }
  const QString spoken = index_.data(Qt::AccessibleTextRole).toString();
  return kind != QAccessible::Name ? QString()
         : spoken.isEmpty()        ? index_.data().toString()
                                   : spoken;
}

QAccessible::State AccessibleCell::state() const {
  QAccessible::State state;
  if (!isValid()) {
    state.invalid = true;
    return state;
  }
  const QRect cell = view_->visualRect(index_);
  state.selectable = true;
  state.focusable = true;
  state.readOnly = (index_.flags() & Qt::ItemIsEditable) == 0;
  state.selected = isSelected();
  state.focused = view_->hasFocus() && view_->currentIndex() == index_;
  state.linked = IsLink();
  state.busy = Percent().isValid() && Percent().toFloat() < 0;
  state.expandable = view_->rootIsDecorated() && view_->model()->hasChildren(index_);
  state.expanded = state.expandable && view_->isExpanded(index_);
  state.invisible = cell.isEmpty() || !view_->isVisible();
  state.offscreen = !cell.intersects(view_->viewport()->rect());
  return state;
}

void* AccessibleCell::interface_cast(QAccessible::InterfaceType type) {
  switch (type) {
    case QAccessible::TableCellInterface:
      return static_cast<QAccessibleTableCellInterface*>(this);
    case QAccessible::ActionInterface:
      return static_cast<QAccessibleActionInterface*>(this);
    case QAccessible::ValueInterface:
      return Percent().isValid() ? static_cast<QAccessibleValueInterface*>(this) : nullptr;
    default:
      return nullptr;
  }
}

void AccessibleCell::doAction(const QString& actionName) {
  if (!isValid()) {
    return;
  }
  view_->setCurrentIndex(index_);
  if (actionName == setFocusAction()) {
    view_->setFocus();
  } else if (auto* links = qobject_cast<LinkDelegate*>(view_->itemDelegate());
             links != nullptr && actionName == pressAction() && IsLink()) {
    // Later: the screen reader waits for the answer to its call, and the owner may open a dialog.
    QMetaObject::invokeMethod(
        links,
        [links, index = index_] {
          if (index.isValid()) {
            Q_EMIT links->Activated(index);
          }
        },
        Qt::QueuedConnection);
  }
}

class AccessibleRows : public QAccessibleWidget, public QAccessibleTableInterface {
 public:
  explicit AccessibleRows(QTreeView* view)
      : QAccessibleWidget(view, view->rootIsDecorated() ? QAccessible::Tree : QAccessible::Table),
        view_(view) {}
  AccessibleRows(const AccessibleRows&) = delete;
  AccessibleRows& operator=(const AccessibleRows&) = delete;

  void* interface_cast(QAccessible::InterfaceType type) override {
    return type == QAccessible::TableInterface ? static_cast<QAccessibleTableInterface*>(this)
                                               : QAccessibleWidget::interface_cast(type);
  }

  // A list describes itself by its hint, which stands in place of rows.
  QString text(QAccessible::Text kind) const override {
    return kind == QAccessible::Description && rowCount() > 0 ? QString()
                                                              : QAccessibleWidget::text(kind);
  }
  // The commands of the view's menu too.
  QStringList actionNames() const override;
  void doAction(const QString& actionName) override;

  // The headings, then the cells row by row: so does the view number the cell of a focus event.
  int childCount() const override { return (rowCount() + 1) * columnCount(); }
  QAccessibleInterface* child(int number) const override;
  int indexOfChild(const QAccessibleInterface* child) const override;
  QAccessibleInterface* childAt(int x, int y) const override {
    return CellOf(view_->indexAt(view_->viewport()->mapFromGlobal(QPoint(x, y))));
  }
  QAccessibleInterface* focusChild() const override { return CellOf(view_->currentIndex()); }

  QAccessibleInterface* caption() const override { return nullptr; }
  QAccessibleInterface* summary() const override { return nullptr; }
  QAccessibleInterface* cellAt(int row, int column) const override {
    return CellOf(IndexAt(row, column));
  }
  int rowCount() const override {
    return view_->model() != nullptr ? CountRows(*view_, view_->rootIndex()) : 0;
  }
  int columnCount() const override { return view_->header()->count(); }
  QString columnDescription(int column) const override {
    return view_->model()->headerData(column, Qt::Horizontal).toString();
  }
  QString rowDescription(int) const override { return {}; }

  QList<int> selectedRows() const override;
  int selectedRowCount() const override { return static_cast<int>(selectedRows().size()); }
  bool isRowSelected(int row) const override {
    return view_->selectionModel()->isSelected(IndexAt(row, 0));
  }
  bool selectRow(int row) override { return Select(row, QItemSelectionModel::Select); }
  bool unselectRow(int row) override { return Select(row, QItemSelectionModel::Deselect); }
  QList<QAccessibleInterface*> selectedCells() const override;
  int selectedCellCount() const override { return selectedRowCount() * columnCount(); }

  // Rows are selected as a whole.
  QList<int> selectedColumns() const override { return {}; }
  int selectedColumnCount() const override { return 0; }
  bool isColumnSelected(int) const override { return false; }
  bool selectColumn(int) override { return false; }
  bool unselectColumn(int) override { return false; }

  void modelChange(QAccessibleTableModelChangeEvent* event) override;

 protected:
  ~AccessibleRows() override {
    for (const QAccessible::Id id : std::as_const(cells_)) {
      QAccessible::deleteAccessibleInterface(id);
    }
    for (const QAccessible::Id id : std::as_const(headings_)) {
      QAccessible::deleteAccessibleInterface(id);
    }
  }

 private:
  QModelIndex IndexAt(int row, int column) const {
    return view_->model() != nullptr && row >= 0 && row < rowCount()
               ? updown::CellAt(*view_, row, column, view_->rootIndex())
               : QModelIndex();
  }
  QAccessibleInterface* CellOf(const QModelIndex& index) const;
  bool Select(int row, QItemSelectionModel::SelectionFlags how) {
    const QModelIndex index = IndexAt(row, 0);
    if (view_->selectionMode() == QAbstractItemView::SingleSelection) {
      how |= QItemSelectionModel::Clear;
    }
    view_->selectionModel()->select(index, how | QItemSelectionModel::Rows);
    return index.isValid();
  }

  QTreeView* view_;
  mutable QHash<QPersistentModelIndex, QAccessible::Id> cells_;
  mutable QHash<int, QAccessible::Id> headings_;
};

QAccessibleInterface* AccessibleRows::child(int number) const {
  const int columns = columnCount();
  if (number < 0 || number >= childCount()) {
    return nullptr;
  }
  if (number >= columns) {
    return cellAt(number / columns - 1, number % columns);
  }
  QAccessible::Id& id = headings_[number];
  if (id == 0) {
    id = QAccessible::registerAccessibleInterface(new AccessibleHeading(view_, number));
  }
  return QAccessible::accessibleInterface(id);
}

QAccessibleInterface* AccessibleRows::CellOf(const QModelIndex& index) const {
  if (!index.isValid()) {
    return nullptr;
  }
  QAccessible::Id& id = cells_[index];
  if (id == 0) {
    id = QAccessible::registerAccessibleInterface(new AccessibleCell(view_, index));
  }
  return QAccessible::accessibleInterface(id);
}

int AccessibleRows::indexOfChild(const QAccessibleInterface* child) const {
  if (const auto* cell = dynamic_cast<const AccessibleCell*>(child)) {
    return cell->isValid() ? (cell->rowIndex() + 1) * columnCount() + cell->columnIndex() : -1;
  }
  return headings_.key(QAccessible::uniqueId(const_cast<QAccessibleInterface*>(child)), -1);
}

QStringList AccessibleRows::actionNames() const {
  QStringList names = QAccessibleWidget::actionNames();
  for (const QAction* action : view_->actions()) {
    if (action->isEnabled() && !action->isSeparator()) {
      names << action->text().remove(u'&');
    }
  }
  return names;
}

void AccessibleRows::doAction(const QString& actionName) {
  QAccessibleWidget::doAction(actionName);
  for (QAction* action : view_->actions()) {
    if (action->text().remove(u'&') == actionName) {
      QMetaObject::invokeMethod(action, &QAction::trigger, Qt::QueuedConnection);
    }
  }
}

QList<int> AccessibleRows::selectedRows() const {
  QList<int> rows;
  for (const QModelIndex& index : view_->selectionModel()->selectedRows()) {
    rows << RowOf(*view_, index);
  }
  return rows;
}

QList<QAccessibleInterface*> AccessibleRows::selectedCells() const {
  QList<QAccessibleInterface*> cells;
  for (const QModelIndex& index : view_->selectionModel()->selectedIndexes()) {
    cells << CellOf(index);
  }
  return cells;
}

// Cells go with what they show, and keep their place in the reader's mind else.
void AccessibleRows::modelChange(QAccessibleTableModelChangeEvent* event) {
  using Change = QAccessibleTableModelChangeEvent;
  if (event->modelChangeType() == Change::DataChanged) {
    for (int row = event->firstRow(); row <= event->lastRow(); ++row) {
      for (int column = event->firstColumn(); column <= event->lastColumn(); ++column) {
        const QVariant percent = IndexAt(row, column).data(kPercentRole);
        if (QAccessibleInterface* cell = percent.isValid() ? cellAt(row, column) : nullptr) {
          QAccessibleValueChangeEvent changed(cell, percent);
          QAccessible::updateAccessibility(&changed);
        }
      }
    }
    return;
  }
  cells_.removeIf([](const auto& known) {
    if (known.key().isValid()) {
      return false;
    }
    QAccessible::deleteAccessibleInterface(known.value());
    return true;
  });
}

}  // namespace

QAccessibleInterface* MakeAccessibleRows(QTreeView* view) { return new AccessibleRows(view); }

}  // namespace updown
