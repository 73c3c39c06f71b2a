#include "packages/my_folder_tree.h"

#include <QScopedValueRollback>
#include <QTimerEvent>

#include "packages/label_delegate.h"
#include "platform/qt/text.h"
#include "resources/qt/texts.h"
#include "widgets/icons.h"

namespace updown {
namespace {

constexpr int kItemIdRole = Qt::UserRole;
constexpr int kFirstListingDelay = 100;  // ms

}  // namespace

CMyFolderTree::CMyFolderTree(AreaRequests& area, PackageDownloads& downloads,
                             const PackageCache& cache, QWidget* parent)
    : QTreeWidget(parent),
      area_(area),
      downloads_(downloads),
      cache_(cache),
      image_(LoadIcon(Icon::Folder)) {
  setObjectName(QStringLiteral("packageTree"));
  setAccessibleName(Text(StringId::FolderTreeName));
  setHeaderLabel(accessibleName());  // a screen reader names the column though it is not shown
  setHeaderHidden(true);
  setUniformRowHeights(true);
  setSelectionMode(SingleSelection);
  setEditTriggers(SelectedClicked | EditKeyPressed);
  setDragDropMode(DropOnly);
  // Expansion goes through OnExpanding alone, which must hear of it before it happens.
  setItemsExpandable(false);
  setExpandsOnDoubleClick(false);
  setItemDelegate(new LabelDelegate(
      LoadIcon(Icon::OpenFolder),
      [this](const QModelIndex& index, const QString& text) {
        return EndLabelEdit(itemFromIndex(index), ToWide(text));
      },
      this));
  rootId_ = AddItem(invisibleRootItem(), u"/");
  firstListing_.start(kFirstListingDelay, this);
}

CMyFolderTree::~CMyFolderTree() = default;

void CMyFolderTree::timerEvent(QTimerEvent* event) {
  if (event->timerId() != firstListing_.timerId()) {
    QTreeWidget::timerEvent(event);
    return;
  }
  firstListing_.stop();
  if (!fillAttempted_) {
    fillAttempted_ = true;
    Select(rootId_);
  }
}

void CMyFolderTree::Refresh() {
  RefreshRoot();
  Select(rootId_);
}

TreeItem CMyFolderTree::AddItem(QTreeWidgetItem* parent, const std::u16string& label) {
  const auto id = static_cast<TreeItem>(static_cast<quint64>(lastId_) + 1);
  lastId_ = id;
  auto* item = new QTreeWidgetItem;
  item->setText(0, ToQString(label));
  item->setIcon(0, image_);
  item->setData(0, kItemIdRole, QVariant::fromValue(static_cast<qulonglong>(id)));
  item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable);
  item->setChildIndicatorPolicy(QTreeWidgetItem::ShowIndicator);
  parent->addChild(item);
  items_.emplace(id, item);
  return id;
}

void CMyFolderTree::DeleteItem(TreeItem id) {
  const std::unique_ptr<QTreeWidgetItem> item(Find(id));
  if (item == nullptr) {
    return;
  }
  items_.erase(id);
  if (currentItem() == item.get()) {
    // Else the control would move on to the next item by itself, and list its files.
    setCurrentItem(nullptr);
  }
}

void CMyFolderTree::DeletePackages(QTreeWidgetItem* root) {
  const QList<QTreeWidgetItem*> packages = root->takeChildren();
  for (const QTreeWidgetItem* package : packages) {
    items_.erase(IdOf(package));
    delete package;
  }
}

QTreeWidgetItem* CMyFolderTree::Find(TreeItem id) const {
  const auto found = items_.find(id);
  return found == items_.end() ? nullptr : found->second;
}

TreeItem CMyFolderTree::IdOf(const QTreeWidgetItem* item) {
  return item == nullptr ? TreeItem::None
                         : static_cast<TreeItem>(item->data(0, kItemIdRole).toULongLong());
}

std::u16string CMyFolderTree::ItemPath(const QTreeWidgetItem* item) {
  std::u16string path;
  for (; item != nullptr; item = item->parent()) {
    if (!path.empty() && item->text(0) != u"/") {
      path.insert(0, 1, u'/');
    }
    path.insert(0, ToWide(item->text(0)));
  }
  return path.empty() ? u"/" : path;
}

bool CMyFolderTree::Select(TreeItem id) {
  QTreeWidgetItem* item = Find(id);
  if (item != nullptr) {
    setCurrentItem(item);
  }
  return item != nullptr && Find(id) == item && currentItem() == item;
}

// An expander stands for the flag, and for children that can be hidden and shown.
void CMyFolderTree::ClearChildrenFlag(TreeItem id) {
  if (QTreeWidgetItem* item = Find(id); item != nullptr) {
    item->setChildIndicatorPolicy(QTreeWidgetItem::DontShowIndicatorWhenChildless);
  }
}

void CMyFolderTree::SelectFromList(TreeItem id) {
  bool selected = false;
  {
    const QScopedValueRollback<bool> suppressed(suppressFill_, true);
    selected = Select(id);
  }
  if (selected) {
    rootPending_ = false;
    FillFolder(id);
  }
}

}  // namespace updown
