#include "transfers/transfer_status_dlg.h"

#include <QHeaderView>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "resources/qt/texts.h"

namespace updown {
namespace {

// Device-independent pixels.
constexpr QSize kLeastSize(280, 250);
constexpr QSize kFirstSize(740, 320);
constexpr std::array<int, kStatusColumns> kColumnWidths{150, 150, 90, 110, 90, 100};

struct MenuItem {
  StringId text;
  const char* name;
};

constexpr std::array<MenuItem, kStatusCommands> kMenuItems{{
    {StringId::MenuPause, "pause"},
    {StringId::MenuResume, "resume"},
    {StringId::MenuRedo, "redo"},
    {StringId::MenuStatusDelete, "delete"},
    {StringId::MenuOpenFile, "openFile"},
    {StringId::MenuOpenFolder, "openFolder"},
    {StringId::MenuMoveFile, "moveFile"},
}};

}  // namespace

CTransferStatusDlg::CTransferStatusDlg(TransferTasks& tasks, const TickCounter& ticks,
                                       Desktop desktop)
    : QDialog(nullptr, Qt::Window),
      tasks_(tasks),
      rows_(model_, ticks),
      commands_(tasks, ticks, model_, rows_, std::move(desktop), this),
      list_(new CListCtrlEx(this)),
      menu_(new QMenu(this)) {
  setObjectName(QStringLiteral("transferStatus"));
  setWindowTitle(Text(StringId::StatusTitle));
  setAccessibleName(windowTitle());
  setMinimumSize(kLeastSize);
  resize(kFirstSize);
  setAttribute(Qt::WA_QuitOnClose, false);
  auto* const layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(list_);
  InitList();
  InitMenu();
}

// The list asks the model while it goes, so it must go first.
CTransferStatusDlg::~CTransferStatusDlg() { delete list_; }

void CTransferStatusDlg::InitList() {
  list_->setObjectName(QStringLiteral("transferList"));
  list_->setAccessibleName(windowTitle());
  list_->SetProgressColumn(static_cast<int>(StatusColumn::Progress));
  list_->SetTaskOfRow([this](int row) { return model_.TaskAt(row); });
  list_->setModel(&model_);
  list_->setFrameShape(QFrame::NoFrame);
  QHeaderView* const header = list_->header();
  header->setSectionsMovable(true);
  header->setFirstSectionMovable(true);
  header->setStretchLastSection(false);
  for (int column = 0; column < kStatusColumns; ++column) {
    const int width = kColumnWidths[static_cast<std::size_t>(column)];
    header->resizeSection(column, std::max(width, header->sectionSizeHint(column)));
  }
  connect(list_, &CListCtrlEx::RowMenuRequested, this, &CTransferStatusDlg::OpenMenu);
  connect(list_, &CListCtrlEx::DeleteRequested, this,
          [this] { RunCommand(StatusCommand::Delete); });
}

void CTransferStatusDlg::InitMenu() {
  menu_->setObjectName(QStringLiteral("statusMenu"));
  for (std::size_t index = 0; index < kStatusCommands; ++index) {
    QAction* const action = menu_->addAction(Text(kMenuItems[index].text));
    action->setObjectName(QLatin1String(kMenuItems[index].name));
    connect(action, &QAction::triggered, this,
            [this, index] { RunCommand(static_cast<StatusCommand>(index)); });
    actions_[index] = action;
  }
}

void CTransferStatusDlg::AddRow(TaskId task) { rows_.AddRow(tasks_.Find(task)); }

void CTransferStatusDlg::ShowPaths(TaskId task) { rows_.ShowPaths(task); }

void CTransferStatusDlg::ShowStarted(TaskId task) { rows_.ShowStarted(task); }

void CTransferStatusDlg::ShowBlock(TaskId task) { rows_.ShowBlock(task); }

void CTransferStatusDlg::ShowWaiting(TaskId task) { rows_.ShowWaiting(task); }

void CTransferStatusDlg::ShowEnded(TaskId task, const TransferResult& result) {
  rows_.ShowEnded(task, result);
}

void CTransferStatusDlg::RunCommand(StatusCommand command) {
  list_->setFocus();
  if (const int row = list_->SelectedRow(); row >= 0) {
    commands_.Run(command, row);
  }
}

void CTransferStatusDlg::OpenMenu(int row, const QPoint& globalPosition) {
  list_->SelectRow(row);
  const TaskPointer task = model_.TaskAt(row);
  if (!task) {
    return;
  }
  const EnabledCommands enabled = CommandsFor(*task);
  for (std::size_t index = 0; index < kStatusCommands; ++index) {
    actions_[index]->setEnabled(enabled[index]);
  }
  menu_->popup(globalPosition);
}

}  // namespace updown
