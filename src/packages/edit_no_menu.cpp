#include "packages/edit_no_menu.h"

#include <QContextMenuEvent>

namespace updown {

CEditNoMenu::CEditNoMenu(QWidget* parent) : QPlainTextEdit(parent) {
  setReadOnly(true);
  setTabChangesFocus(true);
  setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
}

void CEditNoMenu::contextMenuEvent(QContextMenuEvent* event) { event->accept(); }

}  // namespace updown
