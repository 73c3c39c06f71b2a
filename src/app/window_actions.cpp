#include "app/window_actions.h"

#include "resources/qt/texts.h"

namespace updown {
namespace {

QAction* AddAction(QWidget& window, StringId text, const QKeySequence& key, const QString& name) {
  auto* action = new QAction(Text(text), &window);
  action->setObjectName(name);
  action->setShortcut(key);
  window.addAction(action);
  return action;
}

}  // namespace

WindowActions::WindowActions(QWidget& window)
    : refresh(AddAction(window, StringId::MenuPackageRefresh, QKeySequence(Qt::Key_F5),
                        u"refreshAction"_qs)),
      find(AddAction(window, StringId::MenuFind, QKeySequence(Qt::CTRL | Qt::Key_F),
                     u"findAction"_qs)),
      folderTree(AddAction(window, StringId::MenuFolderTree, QKeySequence(Qt::Key_F6),
                           u"folderTreeAction"_qs)),
      transfers(AddAction(window, StringId::MenuTransfers, QKeySequence(Qt::CTRL | Qt::Key_J),
                          u"transfersAction"_qs)),
      help(AddAction(window, StringId::MenuHelp, QKeySequence(Qt::Key_F1), u"helpAction"_qs)),
      cancel(AddAction(window, StringId::CancelRequest, QKeySequence(Qt::Key_Escape),
                       u"cancelAction"_qs)) {}

void WindowActions::AddTo(QWidget& pane) const {
  if (!pane.actions().isEmpty()) {
    auto* line = new QAction(&pane);
    line->setSeparator(true);
    pane.addAction(line);
  }
  pane.addActions({refresh, find, folderTree, transfers, help});
}

}  // namespace updown
