#include "widgets/row_list_view.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

namespace updown {
namespace {

// From 3/8 of the height down; a low list has no room to spare.
QRect HintRect(QRect view, int lineHeight) {
  if (view.height() > 4 * lineHeight) {
    view.setTop(view.top() + view.height() * 3 / 8);
  }
  return view;
}

}  // namespace

RowListView::RowListView(QWidget* parent) : ItemView(parent) {
  setRootIsDecorated(false);
  setItemsExpandable(false);
  setUniformRowHeights(true);
  setSelectionMode(SingleSelection);
  setSelectionBehavior(SelectRows);
  setEditTriggers(NoEditTriggers);
}

int RowListView::RowCount() const {
  return model() != nullptr ? model()->rowCount(rootIndex()) : 0;
}

int RowListView::ColumnCount() const {
  return model() != nullptr ? model()->columnCount(rootIndex()) : 0;
}

QModelIndex RowListView::CellAt(int row, int column) const {
  return model() != nullptr ? model()->index(row, column, rootIndex()) : QModelIndex();
}

int RowListView::SelectedRow() const {
  if (selectionModel() == nullptr) {
    return -1;
  }
  const QModelIndexList rows = selectionModel()->selectedRows();
  const QModelIndex current = currentIndex().siblingAtColumn(0);
  if (rows.isEmpty() || rows.contains(current)) {
    return rows.isEmpty() ? -1 : current.row();
  }
  return std::min_element(rows.begin(), rows.end())->row();
}

void RowListView::SelectRow(int row) {
  if (selectionModel() == nullptr) {
    return;
  }
  if (row < 0 || row >= RowCount()) {
    selectionModel()->clear();
    return;
  }
  selectionModel()->setCurrentIndex(
      CellAt(row, 0), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void RowListView::SetHint(const QString& hint) {
  if (hint != hint_) {
    hint_ = hint;
    setAccessibleDescription(hint_);
    viewport()->update();
  }
}

void RowListView::paintEvent(QPaintEvent* event) {
  ItemView::paintEvent(event);
  if (RowCount() == 0 && !hint_.isEmpty()) {
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(HintRect(viewport()->rect(), fontMetrics().height()),
                     Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, hint_);
  }
  if (RowCount() == 0 && hasFocus()) {  // which has no row to show itself on
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Highlight));
    painter.drawRect(viewport()->rect().adjusted(0, 0, -1, -1));
  }
}

void RowListView::keyPressEvent(QKeyEvent* event) {
  // Without this the first arrow key would step over the current row, and a single row could not be
  // reached at all; nor could the first and last one by Home and End when they are current.
  const bool step = event->key() == Qt::Key_Down || event->key() == Qt::Key_Up;
  const bool jump = event->key() == Qt::Key_Home || event->key() == Qt::Key_End;
  const bool plain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
  if (plain && (step || jump) && SelectCurrentRow() && step) {
    event->accept();
    return;
  }
  ItemView::keyPressEvent(event);
}

void RowListView::mousePressEvent(QMouseEvent* event) {
  ItemView::mousePressEvent(event);
  if (selectionModel() != nullptr && !indexAt(event->position().toPoint()).isValid() &&
      event->modifiers() == Qt::NoModifier) {
    selectionModel()->clear();
  }
}

void RowListView::mouseMoveEvent(QMouseEvent* event) {
  // Where one row is selected a drag selects nothing: each selection of a package asks the service
  // for its files.
  if (event->buttons() == Qt::NoButton || selectionMode() != SingleSelection || dragEnabled()) {
    ItemView::mouseMoveEvent(event);
  }
}

// A list that was reached with the Tab key has a current row that is not selected yet.
bool RowListView::SelectCurrentRow() {
  if (SelectedRow() >= 0 || !currentIndex().isValid()) {
    return false;
  }
  SelectRow(currentIndex().row());
  return true;
}

}  // namespace updown
