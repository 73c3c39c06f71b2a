#include "widgets/item_view.h"

#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QMenu>
#include <QPainter>

#include "widgets/cell_delegate.h"
#include "widgets/contrast.h"
#include "widgets/tips.h"

namespace updown {
namespace {

QColor Between(const QColor& one, const QColor& other) {
  return {(one.red() + other.red()) / 2, (one.green() + other.green()) / 2,
          (one.blue() + other.blue()) / 2};
}

}  // namespace

ItemView::ItemView(QWidget* parent) : QTreeView(parent) {
  setItemDelegate(new CellDelegate(this));
  setAllColumnsShowFocus(true);
}

bool ItemView::viewportEvent(QEvent* event) {
  if (event->type() != QEvent::ToolTip) {
    return QTreeView::viewportEvent(event);
  }
  const auto* help = static_cast<QHelpEvent*>(event);
  const QModelIndex index = indexAt(help->pos());
  const QString tip = TipOf(index);
  ShowTip(help->globalPos(), tip, viewport(), visualRect(index));
  event->setAccepted(!tip.isEmpty());
  return true;
}

QString ItemView::TipOf(const QModelIndex& index) const {
  if (QString tip = index.data(Qt::ToolTipRole).toString(); !tip.isEmpty()) {
    return tip;
  }
  const QRect shown = visualRect(index) & viewport()->rect();
  return sizeHintForIndex(index).width() > shown.width() ? index.data().toString() : QString();
}

void ItemView::contextMenuEvent(QContextMenuEvent* event) {
  if (event->reason() == QContextMenuEvent::Keyboard) {
    OpenMenuByKey();
    return;
  }
  const QModelIndex index = indexAt(event->pos());
  if (index.isValid() && !selectionModel()->isSelected(index)) {
    selectionModel()->setCurrentIndex(
        index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
  }
  OpenMenu(event->pos());
}

void ItemView::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier) {
    OpenMenuByKey();
  } else {
    QTreeView::keyPressEvent(event);
  }
}

// A view that was reached with the Tab key has a current item that is not selected yet.
void ItemView::OpenMenuByKey() {
  const QModelIndex index = currentIndex().siblingAtColumn(0);
  if (!index.isValid()) {
    OpenMenu({});
    return;
  }
  if (!selectionModel()->hasSelection()) {
    selectionModel()->select(index,
                             QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
  }
  scrollTo(index);
  OpenMenu((visualRect(index) & viewport()->rect()).bottomLeft());
}

void ItemView::OpenMenu(const QPoint& position) {
  Q_EMIT MenuAboutToOpen();
  if (actions().isEmpty()) {
    return;
  }
  auto* menu = new QMenu(this);
  menu->setObjectName(objectName() + u"Menu"_qs);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  for (QAction* action : actions()) {
    action->setShortcutVisibleInContextMenu(true);
    menu->addAction(action);
  }
  menu->popup(viewport()->mapToGlobal(position));
}

void ItemView::initViewItemOption(QStyleOptionViewItem* option) const {
  QTreeView::initViewItemOption(option);
  if (!hasFocus()) {
    const QPalette& colors = palette();
    const QColor pale = Between(colors.color(QPalette::Highlight), colors.color(QPalette::Base));
    option->palette.setColor(QPalette::Highlight, pale);
    option->palette.setColor(QPalette::HighlightedText,
                             ReadableOn(pale, colors.color(QPalette::Text)));
  }
}

void ItemView::drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                       const QModelIndex& index) const {
  QTreeView::drawRow(painter, option, index);
  if (hasFocus() && index == currentIndex().siblingAtColumn(0)) {
    painter->save();
    // The highlight's own text colour is often the one of the ground around the row.
    painter->setPen(palette().color(QPalette::Text));
    painter->drawRect(QRect(0, option.rect.top(), viewport()->width(), option.rect.height())
                          .adjusted(0, 0, -1, -1));
    painter->restore();
  }
}

}  // namespace updown
