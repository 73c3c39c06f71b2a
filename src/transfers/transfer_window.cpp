#include "transfers/transfer_window.h"

#include <QGuiApplication>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QScreen>
#include <QShortcut>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "platform/qt/text.h"
#include "resources/qt/texts.h"
#include "transfers/transfer_texts.h"
#include "widgets/cell_delegate.h"
#include "widgets/progress_delegate.h"

namespace updown {
namespace {

// Device-independent pixels.
constexpr QSize kLeastSize(240, 160);
constexpr int kFirstHeight = 320;
constexpr int kCellMargins = 16;

struct Column {
  int least;            // at a normal font
  const char* longest;  // what should fit
};

constexpr std::array<Column, kTransferColumns> kColumns{{
    {150, "a name of a file.pdf"},
    {150, "/package/…/name.pdf"},
    {150, "/home/…/name.pdf"},
    {90, "8 of 12 files, 448 KB of 3.00 MB"},
    {110, "100.00%"},
    {90, "1023.00 KB/s"},
    {100, "00 : 00 : 00 "},
    {120, "Failed: a reason that is short"},
}};

struct Command {
  StringId text;
  const char* name;
};

constexpr std::array<Command, kTransferCommands> kCommands{{
    {StringId::MenuPause, "pause"},
    {StringId::MenuResume, "resume"},
    {StringId::MenuRedo, "redo"},
    {StringId::MenuStatusDelete, "delete"},
    {StringId::MenuOpenFile, "openFile"},
    {StringId::MenuOpenFolder, "openFolder"},
    {StringId::MenuMoveFile, "moveFile"},
    {StringId::MenuCopyPath, "copyPath"},
}};

class TransferDelegate : public CellDelegate {
 public:
  using CellDelegate::CellDelegate;

 protected:
  // Sentences are read from their beginning; of paths both ends tell most.
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
    CellDelegate::initStyleOption(option, index);
    const bool sentence = index.column() == static_cast<int>(TransferColumn::State);
    option->textElideMode = sentence ? Qt::ElideRight : Qt::ElideMiddle;
  }
};

}  // namespace

TransferWindow::TransferWindow(TransferTasks& tasks, const TickCounter& ticks, Desktop desktop)
    : QDialog(nullptr, Qt::Window),
      tasks_(tasks),
      model_(ticks),
      commands_(tasks, model_, std::move(desktop), this),
      list_(new RowListView(this)),
      totals_(new QLabel(this)) {
  setObjectName(u"transferStatus"_qs);
  setWindowTitle(Text(StringId::StatusTitle));
  setAccessibleName(windowTitle());
  setMinimumSize(kLeastSize);
  setAttribute(Qt::WA_QuitOnClose, false);
  totals_->setObjectName(u"transferTotals"_qs);
  totals_->setContentsMargins(6, 3, 6, 3);
  totals_->setWordWrap(true);
  auto* const layout = new QVBoxLayout(this);
  layout->setContentsMargins({});
  layout->setSpacing(0);
  layout->addWidget(list_, 1);
  layout->addWidget(totals_);
  MakeList();
  MakeActions();
  const auto* close = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_W), this);
  connect(close, &QShortcut::activated, this, &QWidget::close);
  updateTimer_.setSingleShot(true);
  connect(&updateTimer_, &QTimer::timeout, this, [this] {
    UpdateTotals();
    UpdateActions();
  });
  UpdateActions();
}

// The list asks the model while it goes, so it must go first.
TransferWindow::~TransferWindow() { delete list_; }

void TransferWindow::MakeList() {
  sorted_.setSourceModel(&model_);
  sorted_.setSortRole(kTransferSortRole);
  sorted_.setSortCaseSensitivity(Qt::CaseInsensitive);
  sorted_.setSortLocaleAware(true);
  list_->setObjectName(u"transferList"_qs);
  list_->setAccessibleName(windowTitle());
  list_->SetHint(Text(StringId::NoTransfers));
  list_->setFrameShape(QFrame::NoFrame);
  list_->setModel(&sorted_);
  list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  list_->setDragDropMode(QAbstractItemView::DragOnly);
  list_->setItemDelegate(new TransferDelegate(list_));
  list_->setItemDelegateForColumn(static_cast<int>(TransferColumn::Progress),
                                  new ProgressDelegate(list_));
  QHeaderView* const header = list_->header();
  header->setObjectName(u"transferHeader"_qs);
  header->setSectionsMovable(true);
  header->setFirstSectionMovable(true);
  header->setSortIndicatorClearable(true);
  header->setSortIndicator(-1, Qt::AscendingOrder);  // the order in which they were asked for
  list_->setSortingEnabled(true);
  SizeColumns();
  using Model = QAbstractItemModel;
  connect(&model_, &Model::rowsInserted, this, &TransferWindow::UpdateSoon);
  connect(&model_, &Model::rowsRemoved, this, &TransferWindow::UpdateSoon);
  connect(&model_, &Model::dataChanged, this, &TransferWindow::UpdateSoon);
  connect(list_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
          &TransferWindow::UpdateActions);
  connect(list_, &RowListView::MenuAboutToOpen, this, &TransferWindow::UpdateActions);
  connect(list_, &QAbstractItemView::doubleClicked, this,
          [this] { commands_.Run(TransferCommand::OpenFile, Selected()); });
}

void TransferWindow::SizeColumns() {
  QHeaderView* const header = list_->header();
  int all = 0;
  for (int column = 0; column < kTransferColumns; ++column) {
    const Column& size = kColumns[static_cast<std::size_t>(column)];
    const int text = fontMetrics().horizontalAdvance(QString::fromUtf8(size.longest));
    const int width = std::max({size.least, text + kCellMargins, header->sectionSizeHint(column)});
    header->resizeSection(column, width);
    all += width;
  }
  const int room = screen()->availableSize().width();
  resize(std::min(all + list_->style()->pixelMetric(QStyle::PM_ScrollBarExtent), room),
         kFirstHeight);
}

void TransferWindow::MakeActions() {
  for (std::size_t index = 0; index < kTransferCommands; ++index) {
    actions_[index] = MakeAction(kCommands[index].text, kCommands[index].name);
    connect(actions_[index], &QAction::triggered, this,
            [this, index] { commands_.Run(static_cast<TransferCommand>(index), Selected()); });
  }
  const auto keys = [this](TransferCommand command, const QList<QKeySequence>& sequences) {
    actions_[static_cast<std::size_t>(command)]->setShortcuts(sequences);
  };
  keys(TransferCommand::Delete, {Qt::Key_Delete});
  keys(TransferCommand::OpenFile, {Qt::Key_Return, Qt::Key_Enter});
  keys(TransferCommand::CopyPath, {QKeySequence::Copy});
  separator_ = new QAction(this);
  separator_->setSeparator(true);
  list_->addAction(separator_);
  clearFinished_ = MakeAction(StringId::MenuClearFinished, "clearFinished");
  resumeFailed_ = MakeAction(StringId::MenuResumeAllFailed, "resumeAllFailed");
  connect(clearFinished_, &QAction::triggered, this, [this] { commands_.ClearFinished(); });
  connect(resumeFailed_, &QAction::triggered, this, [this] { commands_.ResumeAllFailed(); });
}

QAction* TransferWindow::MakeAction(StringId text, const char* name) {
  auto* const action = new QAction(Text(text), this);
  action->setObjectName(QLatin1String(name));
  action->setShortcutContext(Qt::WidgetShortcut);
  list_->addAction(action);
  return action;
}

void TransferWindow::BringForward() {
  setWindowState(windowState() & ~Qt::WindowMinimized);
  show();
  raise();
  activateWindow();
}

void TransferWindow::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  UpdateTotals();
}

std::vector<TaskId> TransferWindow::Selected() const {
  std::vector<TaskId> tasks;
  for (const QModelIndex& index : list_->selectionModel()->selectedRows()) {
    tasks.push_back(model_.TaskAt(sorted_.mapToSource(index).row()));
  }
  return tasks;
}

void TransferWindow::UpdateSoon() {
  if (!updateTimer_.isActive()) {
    updateTimer_.start(0);
  }
}

void TransferWindow::UpdateTotals() {
  if (!isVisible()) {
    return;
  }
  const TransferTotals totals = model_.Totals();
  totals_->setText(Text(StringId::TransferTotals)
                       .arg(FromUtf8(FormatRate(totals.rate)), QString::number(totals.running),
                            QString::number(totals.waiting), QString::number(totals.failed)));
}

// Without a selection the menu is that of the empty ground.
void TransferWindow::UpdateActions() {
  const std::vector<TaskId> selected = Selected();
  const EnabledCommands offered = commands_.Offered(selected);
  for (std::size_t index = 0; index < kTransferCommands; ++index) {
    actions_[index]->setVisible(!selected.empty());
    actions_[index]->setEnabled(offered[index]);
  }
  separator_->setVisible(!selected.empty());
  clearFinished_->setEnabled(!model_.TasksIn(ShownState::Finished).empty());
  resumeFailed_->setEnabled(!model_.TasksIn(ShownState::Failed).empty());
}

}  // namespace updown
