#include "widgets/accessible_rows.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QHeaderView>
#include <QPersistentModelIndex>
#include <QPointer>
#include <map>

#include "widgets/row_list_view.h"

namespace updown {
namespace {

// Part of a list: a cell of a row, or one of the header. Registered with the toolkit, which owns
// it.
class AccessibleCell : public QAccessibleInterface {
 public:
  explicit AccessibleCell(RowListView* list) : list_(list) {}

  QObject* object() const override { return nullptr; }
  QAccessibleInterface* childAt(int x, int y) const override {
    Q_UNUSED(x);
    Q_UNUSED(y);
    return nullptr;
  }
  QAccessibleInterface* parent() const override {
    return list_ != nullptr ? QAccessible::queryAccessibleInterface(list_.data()) : nullptr;
  }
  QAccessibleInterface* child(int index) const override {
    Q_UNUSED(index);
    return nullptr;
  }
  int childCount() const override { return 0; }
  int indexOfChild(const QAccessibleInterface* child) const override {
    Q_UNUSED(child);
    return -1;
  }
  void setText(QAccessible::Text kind, const QString& text) override {
    Q_UNUSED(kind);
    Q_UNUSED(text);
  }

 protected:
  QPointer<RowListView> list_;
};

class AccessibleHeaderCell : public AccessibleCell {
 public:
  AccessibleHeaderCell(RowListView* list, int column) : AccessibleCell(list), column_(column) {}

  bool isValid() const override { return list_ != nullptr && column_ < list_->ColumnCount(); }
  QAccessible::Role role() const override { return QAccessible::ColumnHeader; }
  QString text(QAccessible::Text kind) const override {
    return isValid() && kind == QAccessible::Name
               ? list_->model()->headerData(column_, Qt::Horizontal).toString()
               : QString();
  }
  QRect rect() const override {
    if (!isValid() || list_->header()->isHidden()) {
      return {};
    }
    const QHeaderView* header = list_->header();
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

class AccessibleRowCell : public AccessibleCell,
                          public QAccessibleTableCellInterface,
                          public QAccessibleActionInterface {
 public:
  AccessibleRowCell(RowListView* list, const QModelIndex& index)
      : AccessibleCell(list), index_(index) {}

  bool Shows(const QModelIndex& index) const { return index_ == index; }

  bool isValid() const override { return list_ != nullptr && index_.isValid(); }
  QAccessible::Role role() const override {
    return IsLink() ? QAccessible::Link : QAccessible::Cell;
  }
  QString text(QAccessible::Text kind) const override;
  QRect rect() const override;
  QAccessible::State state() const override;

  void* interface_cast(QAccessible::InterfaceType type) override {
    switch (type) {
      case QAccessible::TableCellInterface:
        return static_cast<QAccessibleTableCellInterface*>(this);
      case QAccessible::ActionInterface:
        return static_cast<QAccessibleActionInterface*>(this);
      default:
        return nullptr;
    }
  }

  bool isSelected() const override {
    return isValid() && list_->selectionModel()->isSelected(index_);
  }
  QList<QAccessibleInterface*> columnHeaderCells() const override {
    QAccessibleInterface* header = isValid() ? parent()->child(index_.column()) : nullptr;
    return header != nullptr ? QList<QAccessibleInterface*>{header}
                             : QList<QAccessibleInterface*>{};
  }
  QList<QAccessibleInterface*> rowHeaderCells() const override { return {}; }
  int columnIndex() const override { return index_.column(); }
  int rowIndex() const override { return index_.row(); }
  int columnExtent() const override { return 1; }
  int rowExtent() const override { return 1; }
  QAccessibleInterface* table() const override { return parent(); }

  QStringList actionNames() const override {
    return IsLink() ? QStringList{pressAction(), setFocusAction()} : QStringList{setFocusAction()};
  }
  void doAction(const QString& actionName) override;
  QStringList keyBindingsForAction(const QString& actionName) const override {
    Q_UNUSED(actionName);
    return {};
  }

 private:
  bool IsLink() const { return isValid() && list_->IsLinkCell(index_); }

  QPersistentModelIndex index_;
};

QString AccessibleRowCell::text(QAccessible::Text kind) const {
  if (!isValid()) {
    return {};
  }
  switch (kind) {
    case QAccessible::Name:
      return list_->CellText(index_);
    case QAccessible::Description:
      return list_->CellHelp(index_);
    default:
      return {};
  }
}

QRect AccessibleRowCell::rect() const {
  if (!isValid()) {
    return {};
  }
  const QRect cell = list_->visualRect(index_);
  return {list_->viewport()->mapToGlobal(cell.topLeft()), cell.size()};
}

QAccessible::State AccessibleRowCell::state() const {
  QAccessible::State state;
  if (!isValid()) {
    state.invalid = true;
    return state;
  }
  const QRect cell = list_->visualRect(index_);
  state.selectable = true;
  state.focusable = true;
  state.readOnly = true;
  state.selected = isSelected();
  state.focused = list_->hasFocus() && list_->currentIndex() == index_;
  state.linked = IsLink();
  state.invisible = cell.isEmpty() || !list_->isVisible();
  state.offscreen = !cell.intersects(list_->viewport()->rect());
  return state;
}

void AccessibleRowCell::doAction(const QString& actionName) {
  if (actionName == pressAction() && IsLink()) {
    list_->PressCell(index_);
  } else if (actionName == setFocusAction() && isValid()) {
    list_->SelectRow(index_.row());
    list_->setFocus();
  }
}

class AccessibleRows : public QAccessibleWidget, public QAccessibleTableInterface {
 public:
  explicit AccessibleRows(RowListView* list)
      : QAccessibleWidget(list, QAccessible::Table), list_(list) {}
  AccessibleRows(const AccessibleRows&) = delete;
  AccessibleRows& operator=(const AccessibleRows&) = delete;

  void* interface_cast(QAccessible::InterfaceType type) override {
    return type == QAccessible::TableInterface ? static_cast<QAccessibleTableInterface*>(this)
                                               : QAccessibleWidget::interface_cast(type);
  }

  // The view numbers the cell of a focus event in the same way.
  int childCount() const override { return (list_->RowCount() + 1) * list_->ColumnCount(); }
  QAccessibleInterface* child(int index) const override;
  int indexOfChild(const QAccessibleInterface* child) const override;
  QAccessibleInterface* childAt(int x, int y) const override;
  QAccessibleInterface* focusChild() const override {
    const QModelIndex current = list_->currentIndex();
    return current.isValid() ? cellAt(current.row(), current.column()) : nullptr;
  }

  QAccessibleInterface* caption() const override { return nullptr; }
  QAccessibleInterface* summary() const override { return nullptr; }
  QAccessibleInterface* cellAt(int row, int column) const override {
    return column >= 0 && column < list_->ColumnCount() && row >= 0
               ? child((row + 1) * list_->ColumnCount() + column)
               : nullptr;
  }
  int rowCount() const override { return list_->RowCount(); }
  int columnCount() const override { return list_->ColumnCount(); }
  QString columnDescription(int column) const override {
    return list_->model() != nullptr ? list_->model()->headerData(column, Qt::Horizontal).toString()
                                     : QString();
  }
  QString rowDescription(int row) const override {
    Q_UNUSED(row);
    return {};
  }

  QList<int> selectedRows() const override {
    const int row = list_->SelectedRow();
    return row >= 0 ? QList<int>{row} : QList<int>{};
  }
  int selectedRowCount() const override { return static_cast<int>(selectedRows().size()); }
  bool isRowSelected(int row) const override { return row >= 0 && row == list_->SelectedRow(); }
  bool selectRow(int row) override {
    list_->SelectRow(row);
    return isRowSelected(row);
  }
  bool unselectRow(int row) override {
    if (isRowSelected(row)) {
      list_->SelectRow(-1);
    }
    return true;
  }
  QList<QAccessibleInterface*> selectedCells() const override;
  int selectedCellCount() const override { return selectedRowCount() * columnCount(); }

  // Rows are selected as a whole.
  QList<int> selectedColumns() const override { return {}; }
  int selectedColumnCount() const override { return 0; }
  bool isColumnSelected(int column) const override { return Nothing(column); }
  bool selectColumn(int column) override { return Nothing(column); }
  bool unselectColumn(int column) override { return Nothing(column); }

  void modelChange(QAccessibleTableModelChangeEvent* event) override {
    Q_UNUSED(event);
    DropCells();
  }

 protected:
  ~AccessibleRows() override { DropCells(); }

 private:
  static bool Nothing(int column) {
    Q_UNUSED(column);
    return false;
  }
  void DropCells() {
    for (const auto& [index, id] : cells_) {
      QAccessible::deleteAccessibleInterface(id);
    }
    cells_.clear();
  }

  RowListView* list_;
  mutable std::map<int, QAccessible::Id> cells_;
};

QAccessibleInterface* AccessibleRows::child(int index) const {
  const int columns = list_->ColumnCount();
  if (index < 0 || index >= childCount()) {
    return nullptr;
  }
  const bool isHeader = index < columns;
  const QModelIndex cell =
      isHeader ? QModelIndex() : list_->CellAt(index / columns - 1, index % columns);
  if (const auto known = cells_.find(index); known != cells_.end()) {
    QAccessibleInterface* shown = QAccessible::accessibleInterface(known->second);
    const auto* rowCell = dynamic_cast<AccessibleRowCell*>(shown);
    if (isHeader ? shown != nullptr : rowCell != nullptr && rowCell->Shows(cell)) {
      return shown;
    }
    QAccessible::deleteAccessibleInterface(known->second);
  }
  QAccessibleInterface* made = nullptr;
  if (isHeader) {
    made = new AccessibleHeaderCell(list_, index);
  } else {
    made = new AccessibleRowCell(list_, cell);
  }
  cells_[index] = QAccessible::registerAccessibleInterface(made);
  return made;
}

int AccessibleRows::indexOfChild(const QAccessibleInterface* child) const {
  for (const auto& [index, id] : cells_) {
    if (QAccessible::accessibleInterface(id) == child) {
      return index;
    }
  }
  return -1;
}

QAccessibleInterface* AccessibleRows::childAt(int x, int y) const {
  const QModelIndex index = list_->indexAt(list_->viewport()->mapFromGlobal(QPoint(x, y)));
  return index.isValid() ? cellAt(index.row(), index.column()) : nullptr;
}

QList<QAccessibleInterface*> AccessibleRows::selectedCells() const {
  QList<QAccessibleInterface*> cells;
  for (const int row : selectedRows()) {
    for (int column = 0; column < columnCount(); ++column) {
      cells << cellAt(row, column);
    }
  }
  return cells;
}

}  // namespace

QAccessibleInterface* MakeAccessibleRows(RowListView* list) { return new AccessibleRows(list); }

}  // namespace updown
