#include "app/main_window.h"

#include <QCloseEvent>
#include <QShortcut>
#include <QVBoxLayout>
#include <chrono>

#include "app/about_box.h"
#include "app/login_prompt.h"
#include "app/main_thread_lister.h"
#include "app/pane_layout.h"
#include "app/task_list_path.h"
#include "engine/kept_tasks.h"
#include "engine/posted_events.h"
#include "localdata/tasklist.h"
#include "packages/pane_links.h"
#include "platform/text.h"
#include "resources/qt/texts.h"
#include "resources/string_id.h"
#include "widgets/icons.h"

namespace updown {
namespace {

constexpr QSize kFirstSize{960, 720};
constexpr int kTreeWidth = 200;  // when the keyboard opens it
// With the windows' own end this keeps the whole exit below two seconds.
constexpr std::chrono::milliseconds kStopLimit{1500};

std::shared_ptr<SchedulerContext> MakeContext(const FileService& service) {
  auto context = std::make_shared<SchedulerContext>();
  context->queue = std::make_shared<TaskQueue>();
  context->service = &service;
  return context;
}

}  // namespace

MainWindow::MainWindow(const LaunchState& launch, FileService& service,
                       InstanceEvent& instanceEvent)
    : launch_(launch),
      instanceEvent_(instanceEvent),
      context_(MakeContext(service)),
      cache_(PackageCache::InitPackageCache(launch.identityHash)),
      session_(service, launch,
               [this](bool refused) { return AskForLogin(isVisible() ? this : nullptr, refused); }),
      requests_(session_, *this),
      downloads_(launch, cache_, requests_, mainThread_, context_, *this),
      keeper_(TaskListPath(launch.identityHash),
              [this] { return KeptRecords(Tasks().Records(), cache_); }) {
  setObjectName(u"mainWindow"_qs);
  LoadStoredTasks();
  ConnectEngine();
  requests_.OpenSession();
  setWindowTitle(Text(StringId::FrameTitle));
  setAccessibleName(windowTitle());
  setWindowIcon(LoadIcon(Icon::Program));
  resize(kFirstSize);
  MakeShortcuts();
  CreatePanes();
  scheduler_ = std::make_unique<Scheduler>(context_);
}

MainWindow::~MainWindow() {
  ShutDown();
  // Panes reach the window's members up to their own end.
  outer_.reset();
}

void MainWindow::LoadStoredTasks() {
  if (const std::optional<std::string> path = TaskListPath(launch_.identityHash)) {
    for (const auto& record : RestoredRecords(LoadTaskList(*path), cache_)) {
      Tasks().AddStoredRecord(record);
    }
  }
}

void MainWindow::ConnectEngine() {
  context_->events =
      std::make_shared<PostedEvents>(mainThread_.Calls(), static_cast<EngineEvents&>(*this));
  context_->lister = std::make_shared<MainThreadLister>(
      mainThread_.Calls(),
      [this](const std::string& path) { return requests_.ListFolder(Utf8ToWide(path)); });
  connect(&downloads_, &Downloads::SaveNeeded, &keeper_, &TaskListKeeper::TasksChanged);
  connect(&downloads_, &Downloads::TaskAdded, this, &MainWindow::ShowAddedTask);
  connect(&downloads_, &Downloads::TaskRestored, this, &MainWindow::ShowRestoredTask);
}

void MainWindow::MakeShortcuts() {
  const auto* about = new QShortcut(QKeySequence(Qt::Key_F1), this);
  connect(about, &QShortcut::activated, this, [this] { ShowAboutBox(this); });
  const auto* tree = new QShortcut(QKeySequence(Qt::Key_F6), this);
  connect(tree, &QShortcut::activated, this, &MainWindow::GoToTreeOrBack);
}

void MainWindow::CreatePanes() {
  WatchForSecondStart();
  outer_ = std::make_unique<CMySplitter>(Qt::Horizontal);
  tree_ = new CMyFolderTree(requests_, downloads_, cache_);
  inner_ = new CMySplitter(Qt::Vertical);
  list_ = new CMyFileListFormView(requests_, cache_, launch_);
  form_ = new CMyFormView(requests_, downloads_, cache_, launch_);
  outer_->setObjectName(u"outerSplitter"_qs);
  outer_->setAccessibleName(windowTitle());
  inner_->setObjectName(u"innerSplitter"_qs);
  inner_->setAccessibleName(list_->accessibleName());
  inner_->addWidget(list_);
  inner_->addWidget(form_);
  outer_->addWidget(tree_);
  outer_->addWidget(inner_);
  notices_ = new NoticeBar;
  auto* const content = new QWidget;
  auto* const column = new QVBoxLayout(content);
  column->setContentsMargins({});
  column->setSpacing(0);
  column->addWidget(notices_);
  column->addWidget(outer_.get(), 1);
  setCentralWidget(content);
  connect(&keeper_, &TaskListKeeper::SavingChanged, this, &MainWindow::OnSavingChanged);
  LayOutPanes();
  ConnectPanes();
  downloads_.RestoreTasks();
  statusWindow_ = std::make_unique<CTransferStatusDlg>(downloads_, SystemTicks());
  list_->FocusList();
}

void MainWindow::ConnectPanes() {
  LinkPanes(*tree_, *list_, *form_);
  connect(tree_, &CMyFolderTree::FolderListed, this, [this] { inner_->refresh(); });
  connect(tree_, &CMyFolderTree::PackagesShown, this,
          [this] { mainThread_.Post([this] { list_->SelectTopRow(); }); });
  connect(form_, &CMyFormView::TransfersWanted, this, &MainWindow::ShowStatus);
}

void MainWindow::LayOutPanes() {
  const PaneHeights heights = PaneHeightsOf(height());
  outer_->setStretchFactor(0, 0);
  outer_->setStretchFactor(1, 1);
  outer_->setSizes({0, width()});
  inner_->setStretchFactor(0, 0);
  inner_->setStretchFactor(1, 1);
  inner_->setSizes({heights.list, height() - heights.list - inner_->handleWidth()});
}

// What dragging the bar does for the mouse: without it the keyboard could not rename a package.
void MainWindow::GoToTreeOrBack() {
  if (tree_->hasFocus()) {
    list_->FocusList();
    return;
  }
  if (outer_->sizes().constFirst() == 0) {
    outer_->setSizes({kTreeWidth, outer_->width() - kTreeWidth});
  }
  tree_->setFocus(Qt::ShortcutFocusReason);
}

void MainWindow::showEvent(QShowEvent* event) {
  QMainWindow::showEvent(event);
  // Before it is shown a splitter knows no size of its own to divide.
  if (!laidOut_) {
    laidOut_ = true;
    LayOutPanes();
  }
}

void MainWindow::WatchForSecondStart() {
  secondStart_.emplace(instanceEvent_.Descriptor(), QSocketNotifier::Read);
  connect(&*secondStart_, &QSocketNotifier::activated, this, [this] {
    if (instanceEvent_.TestAndReset()) {
      Raise();
    }
  });
}

void MainWindow::Raise() {
  setWindowState(windowState() & ~Qt::WindowMinimized);
  show();
  raise();
  activateWindow();
}

void MainWindow::closeEvent(QCloseEvent* event) {
  event->accept();
  hide();
  Q_EMIT Closed();
}

bool MainWindow::ShutDown() {
  if (threadsEnded_) {
    return *threadsEnded_;
  }
  secondStart_.reset();
  hide();
  if (statusWindow_) {
    statusWindow_->hide();
  }
  keeper_.BeginEnd();
  // A worker that waits for a listing gets none, and goes on to its end.
  mainThread_.Close();
  threadsEnded_ = !scheduler_ || scheduler_->Stop(kStopLimit);
  if (*threadsEnded_) {
    cache_.RemoveUnfinished();
  }
  keeper_.WaitForEnd();
  Tasks().Clear();
  statusWindow_.reset();
  return *threadsEnded_;
}

void MainWindow::ShowStatus() {
  if (statusWindow_) {
    statusWindow_->showNormal();
    statusWindow_->raise();
    statusWindow_->activateWindow();
  }
}

}  // namespace updown
