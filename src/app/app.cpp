#include "app/app.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QTranslator>
#include <cstdlib>
#include <utility>

#include "app/command_line.h"
#include "app/launch_identity.h"
#include "platform/debug_stream.h"
#include "platform/unique_fd.h"
#include "resources/strings.h"
#include "widgets/boxes.h"
#include "widgets/icons.h"

namespace updown {
namespace {

constexpr int kProgramIcon = 128;

// Texts of the toolkit's own dialogs, where its translations are installed.
void TranslateToolkit(AnsiCodePage codePage) {
  const QString name = codePage == AnsiCodePage::SimplifiedChinese    ? u"qtbase_zh_CN"_qs
                       : codePage == AnsiCodePage::TraditionalChinese ? u"qtbase_zh_TW"_qs
                                                                      : QString();
  auto translator = std::make_unique<QTranslator>(QCoreApplication::instance());
  if (!name.isEmpty() &&
      translator->load(name, QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
    QCoreApplication::installTranslator(translator.release());
  }
}

// The toolkit's own handler would wait for who reads the stream.
void PrintToolkitMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
  WriteDebugText(qFormatLogMessage(type, context, text).append(u'\n').toStdString());
}

}  // namespace

CUpDownApp::CUpDownApp(std::vector<std::string> arguments) : arguments_(std::move(arguments)) {}

CUpDownApp::~CUpDownApp() { ExitInstance(); }

bool CUpDownApp::InitInstance() {
  IgnoreBrokenPipes();
  launch_ = ReadLaunchState();
  SetStringLanguage(launch_.languageId);
  // A second start brings the first one forward whatever its command line says.
  if (!BecomeInstance()) {
    return false;
  }
  TranslateToolkit(launch_.CodePage());
  QGuiApplication::setDesktopFileName(u"net.updown.UpDown"_qs);
  QApplication::setWindowIcon(LoadIcon(kProgramIcon));
  QApplication::setQuitOnLastWindowClosed(false);
  if (!CheckCommandLine()) {
    return false;
  }
  frame_ = std::make_unique<CMainFrame>(launch_, service_, *instanceEvent_);
  frame_->LoadFrame();
  QObject::connect(frame_.get(), &CMainFrame::Closed, frame_.get(), [this] {
    closed_ = true;
    QCoreApplication::exit();
  });
  // Up to here a signal ends the process as usual: nothing is lost, and the frame's making may wait
  // long for the service.
  signals_ = std::make_unique<TerminationSignals>();
  QObject::connect(signals_.get(), &TerminationSignals::Requested, frame_.get(), &QWidget::close);
  frame_->show();
  return true;
}

bool CUpDownApp::BecomeInstance() {
  InstanceEvent::Result made =
      InstanceEvent::CreateOrSignal(InstanceEventNameOf(launch_.identityHash));
  instanceEvent_ = std::move(made.event);
  return made.outcome == InstanceEvent::Outcome::Created;
}

bool CUpDownApp::CheckCommandLine() {
  const CommandLine parameters = ParseCommandLine(arguments_, launch_.CodePage());
  launch_.serverName = parameters.serverName;
  launch_.serverPort = parameters.serverPort;
  if (!parameters.Accepted()) {
    ShowBox(nullptr, Text(StringId::InvalidParameters, u"Invalid parameters!"),
            Text(StringId::ProgramTitle), BoxIcon::Stop);
  }
  return parameters.Accepted();
}

void CUpDownApp::Exec() {
  if (!closed_) {
    QApplication::exec();
  }
}

bool CUpDownApp::ExitInstance() {
  const bool ended = !frame_ || frame_->ShutDown();
  frame_.reset();
  signals_.reset();
  return ended;
}

int RunUpDown(int argc, char** argv, const Preparation& prepare) {
  HoldStandardStreams();
  qInstallMessageHandler(&PrintToolkitMessage);
  std::vector<std::string> arguments(argv, argv + argc);
  // The toolkit's own options are none of the program's.
  int ownName = argc > 0 ? 1 : 0;
  const QApplication application(ownName, argv);
  CUpDownApp app(std::move(arguments));
  if (!app.InitInstance()) {
    return 0;
  }
  if (prepare) {
    prepare(app);
  }
  app.Exec();
  if (!app.ExitInstance()) {
    std::_Exit(EXIT_SUCCESS);
  }
  return EXIT_SUCCESS;
}

}  // namespace updown
