#include "packages/my_file_list_form_view.h"

#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QMenu>
#include <QScopeGuard>
#include <QVBoxLayout>
#include <array>

#include "engine/package.h"
#include "localdata/file_names.h"
#include "platform/qt/text.h"
#include "resources/qt/texts.h"
#include "widgets/busy_pointer.h"

namespace updown {
namespace {

constexpr std::array<int, package_column::kCount> kPackageColumnWidths{160, 160, 160, 160, 80};
constexpr qsizetype kMostCellCharacters = 259;  // more is never drawn
constexpr int kReadPauseFactor = 9;  // headers take at most a tenth of the main thread's time

}  // namespace

CMyFileListFormView::CMyFileListFormView(AreaRequests& area, const PackageCache& cache,
                                         const LaunchState& launch, QWidget* parent)
    : QWidget(parent),
      area_(area),
      cache_(cache),
      launch_(launch),
      list_(new CListCtrlEx(this)),
      header_(new CSortHeaderCtrl(list_)),
      model_(new PackageListModel(this)) {
  setObjectName(QStringLiteral("packageView"));
  setAccessibleName(Text(StringId::PackageListName));
  setMinimumSize(1, 1);  // the pane can be made as small as its splitter lets it
  list_->setObjectName(QStringLiteral("packageList"));
  list_->setAccessibleName(accessibleName());
  list_->installEventFilter(this);
  setFocusProxy(list_);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(list_);
  InitList();
}

CMyFileListFormView::~CMyFileListFormView() = default;

void CMyFileListFormView::InitList() {
  list_->setHeader(header_);
  header_->setSectionsClickable(true);  // a view that does not sort by itself turns it off
  header_->setSectionsMovable(false);
  header_->setStretchLastSection(false);
  list_->setModel(model_);
  for (int column = 0; column < package_column::kCount; ++column) {
    list_->setColumnWidth(column, kPackageColumnWidths.at(static_cast<std::size_t>(column)));
  }
  list_->EnableHint(true);
  list_->SetProgressColumn(-1);
  connect(header_, &QHeaderView::sectionClicked, this, &CMyFileListFormView::SortBy);
  connect(list_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
          &CMyFileListFormView::OnSelectionChanged);
  connect(list_, &CListCtrlEx::RowMenuRequested, this,
          [this](int, const QPoint& globalPosition) { ShowRowMenu(globalPosition); });
}

void CMyFileListFormView::FocusList() { list_->setFocus(Qt::OtherFocusReason); }

bool CMyFileListFormView::eventFilter(QObject* watched, QEvent* event) {
  if (watched == list_ && event->type() == QEvent::KeyPress &&
      static_cast<QKeyEvent*>(event)->key() == Qt::Key_F5) {
    RefreshList();
    return true;
  }
  return QWidget::eventFilter(watched, event);
}

void CMyFileListFormView::AddPackageRow(TreeItem item, const DirectoryEntry& entry) {
  model_->AddOnTop(PackageRow(entry, item));
  LoadPackageRow(0);
}

void CMyFileListFormView::SelectTopRow() { list_->SelectRow(0); }

void CMyFileListFormView::LoadPackageRow(int row) {
  const PackageRow& package = model_->Row(row);
  PackageCells cells = package.cells;
  const PackageFiles files = FindPackageFiles(cache_, Utf8ToWideName(package.name));
  if (!files.readPath.empty()) {
    const PackageHeader header = ReadPackageHeader(files.readPath, launch_.CodePage());
    const auto cellText = [](const std::u16string& value) {
      return ToQString(std::u16string_view(value).substr(0, kMostCellCharacters));
    };
    cells[package_column::kFrom] = cellText(header.from);
    cells[package_column::kTo] = cellText(header.to);
    cells[package_column::kSubject] = cellText(header.subject);
    cells[package_column::kTime] = cellText(header.sendTime);
  }
  if (const QString status = Text(files.status); !status.isEmpty()) {
    cells[package_column::kStatus] = status;
  }
  model_->SetCells(row, cells);
}

void CMyFileListFormView::RefreshHeaderlessRows() {
  if (nextRead_.isActive()) {
    return;
  }
  if (!sinceRead_.isValid() || sinceRead_.hasExpired(readPause_.count())) {
    ReadHeaderlessRows();
  } else {
    nextRead_.start(static_cast<int>(readPause_.count()), this);
  }
}

void CMyFileListFormView::timerEvent(QTimerEvent* event) {
  if (event->timerId() != nextRead_.timerId()) {
    QWidget::timerEvent(event);
    return;
  }
  nextRead_.stop();
  ReadHeaderlessRows();
}

void CMyFileListFormView::ReadHeaderlessRows() {
  sinceRead_.start();
  for (int row = 0; row < model_->rowCount(); ++row) {
    if (model_->Cell(row, package_column::kFrom).isEmpty()) {
      LoadPackageRow(row);
    }
  }
  readPause_ = kReadPauseFactor * std::chrono::milliseconds(sinceRead_.restart());
}

void CMyFileListFormView::SortBy(int column) {
  if (model_->rowCount() == 0) {
    return;
  }
  header_->SetSortColumn(column);
  model_->Sort(column, header_->GetAscending());
}

void CMyFileListFormView::OnSelectionChanged(const QItemSelection& selected) {
  if (!selected.isEmpty()) {
    Q_EMIT SelectionCleared();
    SelectPackage(selected.first().top());
  }
}

void CMyFileListFormView::SelectPackage(int row) {
  if (!model_->HasRow(row)) {
    return;
  }
  const TreeItem item = model_->Row(row).treeItem;
  const std::u16string name = Utf8ToWideName(model_->Row(row).name);
  Q_EMIT PackageSelected(name, item);
  // A failed listing shows a box, and other rows may have come by the time it closes.
  if (model_->HasRow(row) && model_->Row(row).treeItem == item) {
    LoadPackageRow(row);
  }
}

void CMyFileListFormView::RefreshList() {
  const BusyPointer busy;
  {
    list_->setUpdatesEnabled(false);
    const auto paintAgain = qScopeGuard([this] { list_->setUpdatesEnabled(true); });
    model_->Clear();
    Q_EMIT RefreshWanted();
  }
  FocusList();
}

void CMyFileListFormView::ShowRowMenu(const QPoint& globalPosition) {
  auto* menu = new QMenu(this);
  menu->setObjectName(QStringLiteral("packageMenu"));
  menu->setAttribute(Qt::WA_DeleteOnClose);
  const QAction* refresh =
      menu->addAction(Text(StringId::MenuPackageRefresh) + QStringLiteral("\tF5"));
  connect(refresh, &QAction::triggered, this, &CMyFileListFormView::RefreshList);
  const QAction* remove = menu->addAction(Text(StringId::MenuPackageDelete));
  connect(remove, &QAction::triggered, this, &CMyFileListFormView::DeleteSelectedPackages);
  menu->popup(globalPosition);
}

}  // namespace updown
