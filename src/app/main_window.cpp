#include "app/main_window.h"

#include <QCloseEvent>
#include <QDeadlineTimer>
#include <QGuiApplication>
#include <QVBoxLayout>
#include <algorithm>
#include <chrono>

#include "app/about_box.h"
#include "app/launch_variables.h"
#include "app/login_prompt.h"
#include "app/pane_layout.h"
#include "app/state_path.h"
#include "app/task_list_path.h"
#include "engine/kept_tasks.h"
#include "engine/posted_events.h"
#include "engine/result_texts.h"
#include "localdata/tasklist.h"
#include "platform/folders.h"
#include "platform/qt/text.h"
#include "platform/text.h"
#include "resources/qt/texts.h"
#include "resources/string_id.h"
#include "widgets/icons.h"

namespace updown {
namespace {

constexpr QSize kFirstSize{960, 720};
constexpr int kFirstListingDelay = 100;  // ms: the window is on the screen by then
constexpr int kTreeWidth = 200;          // when the keyboard opens it, at most half the window
constexpr int kLeastLines = 4;           // of list and form, however low the window is
// With the windows' own end this keeps the whole exit below two seconds.
constexpr std::chrono::milliseconds kStopLimit{1500};
constexpr std::chrono::milliseconds kLastWait{100};  // for what has had that time already

std::shared_ptr<SchedulerContext> MakeContext(const FileService& service) {
  auto context = std::make_shared<SchedulerContext>();
  context->queue = std::make_shared<TaskQueue>();
  context->service = &service;
  context->pace = ReadBlockPace();
  return context;
}

}  // namespace

MainWindow::MainWindow(const LaunchState& launch, FileService& service,
                       InstanceEvent& instanceEvent)
    : launch_(launch),
      instanceEvent_(instanceEvent),
      context_(MakeContext(service)),
      cache_(PackageCache::InitPackageCache(launch.identityHash)),
      session_(
          service, launch, PostToMain(),
          [this](const LoginRequest& request, LoginAsked answered) {
            AskForLogin(this, request, std::move(answered));
          },
          [context = context_] { context->schedulerWake.Set(); }),
      downloads_(launch, cache_, context_, *this),
      area_(session_, downloads_, cache_, launch,
            StatePath(launch.identityHash + ".seen").value_or("")),
      commands_(area_, downloads_, this),
      keeper_(TaskListPath(launch.identityHash),
              [this] { return KeptRecords(Tasks().Records(), cache_); }) {
  setObjectName(u"mainWindow"_qs);
  LoadStoredTasks();
  ConnectEngine();
  ConnectArea();
  ConnectNotifications();
  setWindowTitle(Text(StringId::FrameTitle));
  setAccessibleName(windowTitle());
  setWindowIcon(LoadIcon(Icon::Program));
  resize(kFirstSize);
  CreatePanes();
}

MainWindow::~MainWindow() {
  ShutDown();
  // Panes reach the window's members up to their own end.
  outer_.reset();
}

Session::Post MainWindow::PostToMain() {
  return
      [calls = mainThread_.Calls()](std::function<void()> call) { calls->Post(std::move(call)); };
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
  context_->session = &session_;
  scheduler_ = std::make_unique<Scheduler>(context_);
  connect(&downloads_, &Downloads::SaveNeeded, &keeper_, &TaskListKeeper::TasksChanged);
  connect(&downloads_, &Downloads::TaskAdded, this, &MainWindow::ShowAddedTask);
  connect(&downloads_, &Downloads::TaskRestored, this, &MainWindow::ShowRestoredTask);
  connect(&downloads_, &Downloads::TaskMoved, this, &MainWindow::ShowMovedTask);
}

void MainWindow::ConnectArea() {
  connect(&area_, &PackageArea::PackageRenamed, &downloads_, &Downloads::FollowRename);
  connect(&commands_, &PackageCommands::TransfersWanted, this, &MainWindow::ShowStatus);
  connect(qGuiApp, &QGuiApplication::applicationStateChanged, &area_,
          [this](Qt::ApplicationState state) {
            const bool active = state == Qt::ApplicationActive;
            area_.SetActive(active);
            notifications_.SetActive(active);
          });
}

void MainWindow::CreatePanes() {
  WatchForSecondStart();
  outer_ = std::make_unique<QSplitter>(Qt::Horizontal);
  tree_ = new PackageTree(area_, commands_);
  inner_ = new QSplitter(Qt::Vertical);
  packages_ = new PackagePane(area_, commands_,
                              ToQString(AnsiToWide(launch_.serverName, launch_.CodePage())));
  list_ = &packages_->List();
  form_ = new PackageForm(area_, commands_);
  outer_->setObjectName(u"outerSplitter"_qs);
  outer_->setAccessibleName(windowTitle());
  inner_->setObjectName(u"innerSplitter"_qs);
  inner_->setAccessibleName(list_->accessibleName());
  inner_->addWidget(packages_);
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
  statusWindow_ = std::make_unique<TransferWindow>(downloads_, SystemTicks());
  ConnectActions();
  restored_ = state_.Restore(*this);
  state_.Restore(*statusWindow_);
  list_->setFocus(Qt::OtherFocusReason);
}

void MainWindow::ConnectPanes() {
  connect(&area_, &PackageArea::Failed, notices_, [this](quint32 report) {
    notices_->SetNotice(NoticeBar::Source::Service, ToQString(ResultBoxText(report)));
  });
  connect(&area_, &PackageArea::Recovered, notices_,
          [this] { notices_->ClearNotice(NoticeBar::Source::Service); });
  connect(notices_, &NoticeBar::TryAgain, &area_, [this] { area_.Refresh(AskedBy::Person); });
}

QList<QWidget*> MainWindow::Panes() const { return {list_, tree_, &form_->Attachments()}; }

void MainWindow::ConnectActions() {
  connect(actions_.refresh, &QAction::triggered, &area_,
          [this] { area_.Refresh(AskedBy::Person); });
  connect(actions_.find, &QAction::triggered, packages_, &PackagePane::Find);
  connect(actions_.folderTree, &QAction::triggered, this, &MainWindow::GoToTreeOrBack);
  connect(actions_.transfers, &QAction::triggered, this, &MainWindow::ShowStatus);
  connect(actions_.help, &QAction::triggered, this, &MainWindow::ShowHelp);
  connect(actions_.cancel, &QAction::triggered, &area_, &PackageArea::Cancel);
  for (QWidget* pane : Panes()) {
    actions_.AddTo(*pane);
  }
  statusWindow_->addActions({actions_.transfers, actions_.help});
}

void MainWindow::LayOutPanes() {
  for (QWidget* pane : {static_cast<QWidget*>(list_), static_cast<QWidget*>(form_)}) {
    pane->setMinimumHeight(kLeastLines * pane->fontMetrics().lineSpacing());
  }
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
    list_->setFocus(Qt::ShortcutFocusReason);
    return;
  }
  if (outer_->sizes().constFirst() == 0) {
    const int width = std::min(kTreeWidth, outer_->width() / 2);
    outer_->setSizes({width, outer_->width() - width});
  }
  tree_->setFocus(Qt::ShortcutFocusReason);
}

void MainWindow::showEvent(QShowEvent* event) {
  QMainWindow::showEvent(event);
  if (!onScreen_) {
    onScreen_ = true;
    if (!restored_) {
      LayOutPanes();  // before it is shown a splitter knows no size of its own to divide
    }
    firstListing_.start(kFirstListingDelay, this);
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

void MainWindow::timerEvent(QTimerEvent* event) {
  if (event->timerId() == firstListing_.timerId()) {
    firstListing_.stop();
    area_.Refresh(AskedBy::Program);
  } else {
    QMainWindow::timerEvent(event);
  }
}

void MainWindow::Raise() {
  setWindowState(windowState() & ~Qt::WindowMinimized);
  show();
  raise();
  activateWindow();
}

void MainWindow::closeEvent(QCloseEvent* event) {
  event->accept();
  LeaveScreen();
  Q_EMIT Closed();
}

void MainWindow::LeaveScreen() {
  if (isVisible()) {
    state_.Take(*this);
    state_.Take(*statusWindow_);
  }
  hide();
  if (statusWindow_) {
    statusWindow_->hide();
  }
}

bool MainWindow::ShutDown() {
  if (threadsEnded_) {
    return *threadsEnded_;
  }
  secondStart_.reset();
  firstListing_.stop();
  LeaveScreen();
  state_.BeginSave();
  notifications_.BeginEnd();
  keeper_.BeginEnd();
  mainThread_.Close();
  const QDeadlineTimer deadline(kStopLimit);
  context_->schedulerExit.Set();  // no worker starts for what the end of the session leaves undone
  // First: a worker that waits for a listing gets none, and goes on to its end.
  const bool sessionEnded = session_.Stop(kStopLimit);
  const std::chrono::milliseconds left(deadline.remainingTime());
  threadsEnded_ = (!scheduler_ || scheduler_->Stop(left)) && sessionEnded;
  if (*threadsEnded_) {
    cache_.RemoveUnfinished();
  }
  keeper_.WaitForEnd();
  const bool told = notifications_.WaitForEnd(kLastWait);
  threadsEnded_ = state_.WaitForEnd() && told && *threadsEnded_;
  Tasks().Clear();
  statusWindow_.reset();
  return *threadsEnded_;
}

void MainWindow::ShowStatus() {
  if (statusWindow_) {
    statusWindow_->BringForward();
  }
}

// A pane's own commands stand in front of those of the window.
void MainWindow::ShowHelp() {
  QList<HelpKeys> keys{HelpKeys(Text(StringId::HelpEverywhere), actions())};
  QList<QWidget*> lists = Panes();
  lists.append(statusWindow_->findChild<RowListView*>());
  for (const QWidget* list : lists) {
    QList<QAction*> own = list->actions();
    own.removeIf([this](QAction* action) { return actions().contains(action); });
    if (HelpKeys ofList(list->accessibleName(), own); !ofList.rows.isEmpty()) {
      keys.append(ofList);
    }
  }
  HelpKeys all(Text(StringId::HelpAllLists), {});
  all.Add({Qt::Key_Menu, Qt::SHIFT | Qt::Key_F10}, Text(StringId::HelpMenuKey));
  keys.append(all);
  HelpKeys others(Text(StringId::HelpOtherWindows), {actions_.transfers, actions_.help});
  others.Add({Qt::CTRL | Qt::Key_W, Qt::Key_Escape}, Text(StringId::HelpCloseKey));
  keys.append(others);
  if (help_ == nullptr) {
    help_ = new HelpWindow(this);
    help_->addActions({actions_.transfers, actions_.help});
  }
  help_->Open(keys);
}

}  // namespace updown
