#include <QDropEvent>
#include <QKeyEvent>
#include <QMouseEvent>

#include "localdata/file_names.h"
#include "packages/my_folder_tree.h"
#include "platform/text.h"
#include "resources/string_id.h"
#include "service/result_codes.h"
#include "widgets/busy_pointer.h"

// Selection, expansion, label editing and drops: what a person does to the tree.

namespace updown {
namespace {

bool HasChildrenFlag(const QTreeWidgetItem& item) {
  return item.childIndicatorPolicy() == QTreeWidgetItem::ShowIndicator;
}

bool HasExpander(const QTreeWidgetItem& item) {
  return HasChildrenFlag(item) || item.childCount() > 0;
}

// A dropped file is taken and nothing is done with it; a copy, so that its source keeps it.
void TakeDrop(QDropEvent& event) {
  event.setDropAction(Qt::CopyAction);
  event.accept();
}

}  // namespace

void CMyFolderTree::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
  QTreeWidget::currentChanged(current, previous);
  if (const QTreeWidgetItem* item = itemFromIndex(current); item != nullptr) {
    OnSelectionChanged(IdOf(item));
  }
}

void CMyFolderTree::OnSelectionChanged(TreeItem id) {
  const QTreeWidgetItem* item = Find(id);
  if (item == nullptr) {
    return;
  }
  if (!item->isExpanded() && HasChildrenFlag(*item)) {
    OnExpanding(id, Expansion::Expand);
  } else {
    FillFolder(id);
  }
}

// The handler's work comes first; an item that has no child after it does not expand.
void CMyFolderTree::OnExpanding(TreeItem id, Expansion expansion) {
  FillFolder(id);
  QTreeWidgetItem* item = Find(id);
  if (item != nullptr && item->childCount() > 0) {
    const bool toggled = !item->isExpanded();
    item->setExpanded(expansion == Expansion::Toggle ? toggled : expansion == Expansion::Expand);
  }
}

bool CMyFolderTree::IsOnExpander(const QTreeWidgetItem* item, const QPoint& position) const {
  if (item == nullptr || !HasExpander(*item)) {
    return false;
  }
  const QRect label = visualItemRect(item);
  return isRightToLeft()
             ? position.x() > label.right() && position.x() <= label.right() + indentation()
             : position.x() < label.left() && position.x() >= label.left() - indentation();
}

void CMyFolderTree::mousePressEvent(QMouseEvent* event) {
  const QPoint position = event->position().toPoint();
  const QTreeWidgetItem* item = itemAt(position);
  if (event->button() == Qt::LeftButton && IsOnExpander(item, position)) {
    OnExpanding(IdOf(item), Expansion::Toggle);
    return;
  }
  QTreeWidget::mousePressEvent(event);
}

void CMyFolderTree::mouseMoveEvent(QMouseEvent* event) {
  // A drag selects nothing: each selection asks the service for a folder.
  if (event->buttons() == Qt::NoButton) {
    QTreeWidget::mouseMoveEvent(event);
  }
}

void CMyFolderTree::mouseDoubleClickEvent(QMouseEvent* event) {
  const QTreeWidgetItem* item = itemAt(event->position().toPoint());
  const TreeItem id = IdOf(item);
  if (event->button() != Qt::LeftButton || item == nullptr || !HasExpander(*item)) {
    QTreeWidget::mouseDoubleClickEvent(event);
    return;
  }
  if (!IsOnExpander(item, event->position().toPoint())) {
    QTreeWidget::mouseDoubleClickEvent(event);
  }
  OnExpanding(id, Expansion::Toggle);
}

// A splitter keeps the widget of a closed pane, beside its own area. The keyboard must not reach it
// there: who pressed an arrow key would change the attachments on show without seeing why.
void CMyFolderTree::moveEvent(QMoveEvent* event) {
  QTreeWidget::moveEvent(event);
  const bool closed = event->pos().x() < 0;
  setFocusPolicy(closed ? Qt::NoFocus : Qt::StrongFocus);
  if (closed && hasFocus()) {
    focusNextChild();
  }
}

void CMyFolderTree::keyPressEvent(QKeyEvent* event) {
  const QTreeWidgetItem* item = currentItem();
  const bool expander = item != nullptr && HasExpander(*item);
  switch (event->key()) {
    case Qt::Key_Right:
    case Qt::Key_Plus:
    case Qt::Key_Asterisk:
      if (expander && !item->isExpanded()) {
        OnExpanding(IdOf(item), Expansion::Expand);
        return;
      }
      break;
    case Qt::Key_Left:
    case Qt::Key_Minus:
      if (expander && item->isExpanded()) {
        OnExpanding(IdOf(item), Expansion::Collapse);
        return;
      }
      break;
    default:
      break;
  }
  QTreeWidget::keyPressEvent(event);
}

bool CMyFolderTree::EndLabelEdit(const QTreeWidgetItem* item, const std::u16string& text) {
  const std::u16string oldPath = ItemPath(item);
  std::u16string newPath = oldPath;
  const std::size_t slash = newPath.rfind(u'/');
  if (oldPath == u"/" || slash == std::u16string::npos ||
      EqualIgnoringCase(newPath.substr(slash + 1), text)) {
    return false;
  }
  newPath.replace(slash + 1, std::u16string::npos, text);
  if (!FitsPath(newPath)) {
    area_.ReportResult(static_cast<std::int64_t>(StringId::InvalidParameters));
    return false;
  }
  const BusyPointer busy;
  return area_.RenameEntry(newPath, oldPath) == result::kOk;
}

void CMyFolderTree::dragEnterEvent(QDragEnterEvent* event) { TakeDrop(*event); }
void CMyFolderTree::dragMoveEvent(QDragMoveEvent* event) { TakeDrop(*event); }
void CMyFolderTree::dropEvent(QDropEvent* event) { TakeDrop(*event); }

}  // namespace updown
