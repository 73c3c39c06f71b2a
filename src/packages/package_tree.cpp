#include "packages/package_tree.h"

#include <QDropEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QScopedValueRollback>

#include "resources/qt/texts.h"
#include "resources/string_id.h"
#include "widgets/cell_delegate.h"
#include "widgets/icons.h"

namespace updown {
namespace {

// The selected folder stands open.
class FolderDelegate : public CellDelegate {
 public:
  using CellDelegate::CellDelegate;

  // News of the package do not take away what has been typed so far.
  void setEditorData(QWidget* editor, const QModelIndex& index) const override {
    const auto* line = qobject_cast<const QLineEdit*>(editor);
    if (line == nullptr || !line->isModified()) {
      CellDelegate::setEditorData(editor, index);
    }
  }

 protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
    CellDelegate::initStyleOption(option, index);
    if ((option->state & QStyle::State_Selected) != 0) {
      option->icon = open_;
    }
  }

 private:
  const QIcon open_ = LoadIcon(Icon::OpenFolder);
};

// A dropped file is taken and nothing is done with it; a copy, so that its source keeps it.
void TakeDrop(QDropEvent& event) {
  event.setDropAction(Qt::CopyAction);
  event.accept();
}

}  // namespace

PackageTree::PackageTree(PackageArea& area, PackageCommands& commands, QWidget* parent)
    : ItemView(parent),
      area_(area),
      columns_(area),
      rename_(MakeAction(this, StringId::Rename, u"renamePackage"_qs, {Qt::Key_F2})),
      delete_(MakeAction(this, StringId::MenuPackageDelete, u"deletePackage"_qs,
                         {QKeySequence::Delete})) {
  setObjectName(QStringLiteral("packageTree"));
  setAccessibleName(Text(StringId::FolderTreeName));
  setHeaderHidden(true);
  setUniformRowHeights(true);
  setSelectionMode(SingleSelection);
  setEditTriggers(SelectedClicked);
  setDragDropMode(DropOnly);
  setItemDelegate(new FolderDelegate(this));
  setModel(&columns_);
  addActions({rename_, delete_});
  connect(rename_, &QAction::triggered, this, [this] { edit(currentIndex()); });
  connect(delete_, &QAction::triggered, this,
          [this, &commands] { commands.DeletePackage(CurrentPackage()); });
  connect(this, &ItemView::MenuAboutToOpen, this, &PackageTree::UpdateActions);
  connect(&area_, &PackageArea::SelectionChanged, this, &PackageTree::ShowSelection);
  connect(&area_, &PackageArea::HeaderChanged, this, &PackageTree::UpdateActions);
  UpdateActions();
}

std::string PackageTree::CurrentPackage() const {
  return area_.NameAt(columns_.mapToSource(currentIndex()));
}

void PackageTree::UpdateActions() {
  const std::string package = CurrentPackage();
  const bool enabled = !package.empty() && !area_.IsBusy(package);
  rename_->setEnabled(enabled);
  delete_->setEnabled(enabled);
}

void PackageTree::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
  QTreeView::currentChanged(current, previous);
  UpdateActions();
  if (const std::string name = CurrentPackage(); !following_ && !name.empty()) {
    area_.Select(name);
  }
}

void PackageTree::ShowSelection() {
  const QScopedValueRollback following(following_, true);
  const QModelIndex item =
      columns_.mapFromSource(area_.IndexOf(area_.Selected(), package_column::kName));
  setCurrentIndex(item.isValid() ? item : columns_.index(0, 0));
}

void PackageTree::rowsInserted(const QModelIndex& parent, int first, int last) {
  QTreeView::rowsInserted(parent, first, last);
  if (parent.isValid() && last - first + 1 == columns_.rowCount(parent)) {
    expand(parent);
  }
}

// The view moves on when the current item goes; what is selected then is up to the list.
void PackageTree::rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) {
  const QScopedValueRollback following(following_, true);
  QTreeView::rowsAboutToBeRemoved(parent, first, last);
}

void PackageTree::mouseMoveEvent(QMouseEvent* event) {
  // A drag selects nothing: each selection asks the service for a folder.
  if (event->buttons() == Qt::NoButton) {
    QTreeView::mouseMoveEvent(event);
  }
}

// A splitter keeps the widget of a closed pane, beside its own area. The keyboard must not reach it
// there: who pressed an arrow key would select another package without seeing why.
void PackageTree::moveEvent(QMoveEvent* event) {
  QTreeView::moveEvent(event);
  const bool closed = event->pos().x() < 0;
  setFocusPolicy(closed ? Qt::NoFocus : Qt::StrongFocus);
  if (closed && hasFocus()) {
    focusNextChild();
  }
}

void PackageTree::dragEnterEvent(QDragEnterEvent* event) { TakeDrop(*event); }
void PackageTree::dragMoveEvent(QDragMoveEvent* event) { TakeDrop(*event); }
void PackageTree::dropEvent(QDropEvent* event) { TakeDrop(*event); }

}  // namespace updown
