#include "app/main_frame.h"

#include <QCloseEvent>
#include <QShortcut>
#include <chrono>

#include "app/about_box.h"
#include "app/login_prompt.h"
#include "app/pane_layout.h"
#include "app/report_result.h"
#include "app/task_list_path.h"
#include "localdata/tasklist.h"
#include "platform/qt/text.h"
#include "resources/string_id.h"
#include "widgets/boxes.h"
#include "widgets/icons.h"

namespace updown {
namespace {

constexpr int kFrameIcon = 128;
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

CMainFrame::CMainFrame(const LaunchState& launch, FileService& service,
                       InstanceEvent& instanceEvent)
    : launch_(launch),
      service_(service),
      instanceEvent_(instanceEvent),
      context_(MakeContext(service)),
      tasks_(context_->queue, launch),
      cache_(PackageCache::InitPackageCache(launch.identityHash)),
      session_(service, launch, [this](bool refused) {
        return AskForLogin(isVisible() ? this : nullptr, refused);
      }) {
  setObjectName(u"mainFrame"_qs);
  LoadStoredTasks();
  target_.emplace([this](const WindowMessage& message) { return WindowProc(message); });
  const SharedSession::Opened opened = session_.OpenSharedSession();
  if (!opened.open) {
    CMainFrame::ReportResult(opened.error);
  }
}

CMainFrame::~CMainFrame() {
  ShutDown();
  // Panes reach the frame's members up to their own end.
  outer_.reset();
}

void CMainFrame::LoadStoredTasks() {
  if (const std::optional<std::string> path = TaskListPath(launch_.identityHash)) {
    tasks_.Records() = LoadTaskList(*path);
  }
  for (TransferRecord& record : tasks_.Records()) {
    record.keepAcrossRestart = 1;
  }
}

void CMainFrame::LoadFrame() {
  setWindowTitle(Text(StringId::FrameTitle));
  setAccessibleName(windowTitle());
  setWindowIcon(LoadIcon(kFrameIcon));
  resize(kFirstSize);
  const auto* about = new QShortcut(QKeySequence(Qt::Key_F1), this);
  connect(about, &QShortcut::activated, this, [this] { ShowAboutBox(this); });
  const auto* tree = new QShortcut(QKeySequence(Qt::Key_F6), this);
  connect(tree, &QShortcut::activated, this, &CMainFrame::GoToTreeOrBack);
  OnCreateClient();
  scheduler_ = std::make_unique<Scheduler>(context_);
}

void CMainFrame::OnCreateClient() {
  WatchForSecondStart();
  outer_ = std::make_unique<CMySplitter>(Qt::Horizontal);
  tree_ = new CMyFolderTree(*this);
  inner_ = new CMySplitter(Qt::Vertical);
  list_ = new CMyFileListFormView(*this);
  form_ = new CMyFormView(*this);
  outer_->setObjectName(u"outerSplitter"_qs);
  outer_->setAccessibleName(windowTitle());
  inner_->setObjectName(u"innerSplitter"_qs);
  inner_->setAccessibleName(list_->accessibleName());
  inner_->addWidget(list_);
  inner_->addWidget(form_);
  outer_->addWidget(tree_);
  outer_->addWidget(inner_);
  setCentralWidget(outer_.get());
  LayOutPanes();

  form_->InitForm();
  WireWindows();
  tree_->InitTree();
  statusWindow_ = std::make_unique<CTransferStatusDlg>(*this, SystemTicks());
  statusWindow_->InitDialog();
  statusWindow_->SetFrameWindow(FrameWindow());
  list_->InitList();
  list_->FocusList();
}

void CMainFrame::WireWindows() {
  const WindowHandle frame = FrameWindow();
  tree_->WireWindows(list_->Handle(), form_->Handle(), frame);
  list_->WireWindows(tree_->Handle(), frame, form_->Handle());
  form_->WireWindows(frame);
}

void CMainFrame::LayOutPanes() {
  const PaneHeights heights = PaneHeightsOf(height());
  outer_->setStretchFactor(0, 0);
  outer_->setStretchFactor(1, 1);
  outer_->setSizes({0, width()});
  inner_->setStretchFactor(0, 0);
  inner_->setStretchFactor(1, 1);
  inner_->setSizes({heights.list, height() - heights.list - inner_->handleWidth()});
}

// What dragging the bar does for the mouse: without it the keyboard could not rename a package.
void CMainFrame::GoToTreeOrBack() {
  if (tree_->hasFocus()) {
    list_->FocusList();
    return;
  }
  if (outer_->sizes().constFirst() == 0) {
    outer_->setSizes({kTreeWidth, outer_->width() - kTreeWidth});
  }
  tree_->setFocus(Qt::ShortcutFocusReason);
}

void CMainFrame::showEvent(QShowEvent* event) {
  QMainWindow::showEvent(event);
  // Before it is shown a splitter knows no size of its own to divide.
  if (!laidOut_) {
    laidOut_ = true;
    LayOutPanes();
  }
}

void CMainFrame::timerEvent(QTimerEvent* event) {
  if (event->timerId() == saveTimer_.timerId()) {
    OnSavePause();
  } else {
    QMainWindow::timerEvent(event);
  }
}

void CMainFrame::WatchForSecondStart() {
  secondStart_.emplace(instanceEvent_.Descriptor(), QSocketNotifier::Read);
  connect(&*secondStart_, &QSocketNotifier::activated, this, [this] {
    if (instanceEvent_.TestAndReset()) {
      RaiseFrame();
    }
  });
}

void CMainFrame::RaiseFrame() {
  setWindowState(windowState() & ~Qt::WindowMinimized);
  show();
  raise();
  activateWindow();
}

void CMainFrame::closeEvent(QCloseEvent* event) {
  event->accept();
  hide();
  Q_EMIT Closed();
}

bool CMainFrame::ShutDown() {
  if (threadsEnded_) {
    return *threadsEnded_;
  }
  secondStart_.reset();
  saveTimer_.stop();
  hide();
  if (statusWindow_) {
    statusWindow_->hide();
  }
  tasks_.DropUnkeptRecords();
  SaveTasks();
  // A worker that waits for a listing gets none, and goes on to its end.
  target_.reset();
  threadsEnded_ = !scheduler_ || scheduler_->Stop(kStopLimit);
  tasks_.Queue().Clear();
  tasks_.Records().Clear();
  statusWindow_.reset();
  return *threadsEnded_;
}

WindowHandle CMainFrame::FrameWindow() const {
  return target_ ? target_->Handle() : WindowHandle();
}

void CMainFrame::ReportResult(std::int64_t code) {
  if (code != 0) {
    // No caption: a blank, since an empty one would be replaced by the program's file name.
    ShowBox(isVisible() ? this : nullptr, ToQString(ReportText(code)), u" "_qs,
            BoxIcon::Exclamation);
  }
}

}  // namespace updown
