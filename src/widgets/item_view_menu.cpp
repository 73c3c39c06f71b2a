#include "widgets/item_view_menu.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>

namespace updown {

ItemViewMenu::ItemViewMenu(QAbstractItemView* view) : QObject(view), view_(view) {
  view_->installEventFilter(this);
  view_->viewport()->installEventFilter(this);
}

bool ItemViewMenu::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::ContextMenu) {
    const auto* menu = static_cast<QContextMenuEvent*>(event);
    const bool byKey = menu->reason() == QContextMenuEvent::Keyboard;
    if (!byKey && watched != view_->viewport()) {
      return false;  // the header
    }
    event->accept();
    byKey ? OpenByKey() : OpenByMouse(menu->pos());
    return true;
  }
  if (event->type() == QEvent::KeyPress && watched == view_) {
    const auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() == Qt::Key_F10 && key->modifiers() == Qt::ShiftModifier) {
      OpenByKey();
      return true;
    }
  }
  return false;
}

void ItemViewMenu::OpenByMouse(const QPoint& position) {
  const QModelIndex index = view_->indexAt(position);
  if (index.isValid() && !view_->selectionModel()->isSelected(index)) {
    view_->selectionModel()->setCurrentIndex(
        index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
  }
  Open(index, view_->viewport()->mapToGlobal(position));
}

// A view that was reached with the Tab key has a current item that is not selected yet.
void ItemViewMenu::OpenByKey() {
  const QModelIndex index = view_->currentIndex().siblingAtColumn(0);
  if (!index.isValid()) {
    Open(index, view_->viewport()->mapToGlobal(QPoint()));
    return;
  }
  if (!view_->selectionModel()->hasSelection()) {
    view_->selectionModel()->select(
        index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
  }
  view_->scrollTo(index);
  const QRect inView = view_->visualRect(index) & view_->viewport()->rect();
  Open(index, view_->viewport()->mapToGlobal(inView.bottomLeft()));
}

void ItemViewMenu::Open(const QModelIndex& index, const QPoint& globalPosition) {
  Q_EMIT AboutToOpen();
  if (view_->actions().isEmpty()) {
    if (index.isValid()) {
      Q_EMIT OpenedOnRow(index, globalPosition);
    }
    return;
  }
  auto* menu = new QMenu(view_);
  menu->setObjectName(view_->objectName() + u"Menu"_qs);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  for (QAction* action : view_->actions()) {
    action->setShortcutVisibleInContextMenu(true);
    menu->addAction(action);
  }
  menu->popup(globalPosition);
}

}  // namespace updown
