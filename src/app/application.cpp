#include "app/application.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QTranslator>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "app/command_line.h"
#include "app/earlier_data.h"
#include "app/launch_identity.h"
#include "app/launch_variables.h"
#include "app/session_bus.h"
#include "platform/debug_stream.h"
#include "platform/qt/text.h"
#include "platform/unique_fd.h"
#include "resources/qt/texts.h"
#include "resources/texts.h"
#include "widgets/accessibility.h"
#include "widgets/icons.h"
#include "widgets/message_boxes.h"

namespace updown {
namespace {

constexpr char kOptionsText[] =
    "\n"
    "  -s SERVICE  name of the file service, resolved by the relay\n"
    "  -p PORT     its TCP port; 8080 if not given\n"
    "  --help      this text\n"
    "  --version   which version this is\n"
    "\n"
    "Started by a parent application, which sets eight environment variables: see updown(1).\n";

// Texts of the toolkit's own dialogs, where its translations are installed.
void TranslateToolkit() {
  const QString name = ToQString(CurrentLanguage().qtCatalog);
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

// Questions that need neither a display nor a service.
bool AnswerOnly(const std::vector<std::string>& arguments) {
  const CommandLine asked = ParseCommandLine(arguments, AnsiCodePage::Western);
  if (asked.help) {
    std::printf("%s%s", kUsage, kOptionsText);
  } else if (asked.version) {
    std::puts("UpDown " UPDOWN_VERSION);
  }
  return asked.help || asked.version;
}

}  // namespace

Application::Application(std::vector<std::string> arguments) : arguments_(std::move(arguments)) {}

Application::~Application() { ShutDown(); }

bool Application::Start() {
  launch_ = ReadLaunchState();
  SetStringLanguage(launch_.languageId);
  // A second start brings the first one forward whatever its command line says.
  if (!BecomeInstance()) {
    return false;
  }
  TranslateToolkit();
  InstallAccessibility();
  QGuiApplication::setDesktopFileName(u"net.updown.UpDown"_qs);
  QApplication::setWindowIcon(LoadIcon(Icon::Program));
  QApplication::setQuitOnLastWindowClosed(false);
  if (!CheckCommandLine()) {
    return false;
  }
  TakeOverEarlierData(launch_.identityHash,
                      EarlierNamesOf(ReadLaunchIdentity(), launch_.CodePage()));
  // Before transfers begin. Up to here a signal ends the process at once: nothing is lost.
  signals_ = std::make_unique<TerminationSignals>();
  window_ = std::make_unique<MainWindow>(launch_, service_, *instanceEvent_);
  QObject::connect(window_.get(), &MainWindow::Closed, window_.get(), [this] {
    closed_ = true;
    QCoreApplication::exit();
  });
  QObject::connect(signals_.get(), &TerminationSignals::Requested, window_.get(), &QWidget::close);
  TellLaunchFaults();
  if (!closed_) {
    window_->show();
  }
  return true;
}

bool Application::BecomeInstance() {
  InstanceEvent::Result made =
      InstanceEvent::CreateOrSignal(InstanceEventNameOf(launch_.identityHash));
  instanceEvent_ = std::move(made.event);
  return made.outcome == InstanceEvent::Outcome::Created;
}

bool Application::CheckCommandLine() {
  const CommandLine parameters = ParseCommandLine(arguments_, launch_.CodePage());
  launch_.serverName = parameters.serverName;
  launch_.serverPort = parameters.serverPort;
  if (!parameters.Accepted()) {
    exitCode_ = kUsageError;
    WriteDebugText(kUsage);
    // While the box stands a right start of this identity is to find no other.
    instanceEvent_.reset();
    ShowBox(nullptr, Text(StringId::InvalidParameters), Text(StringId::ProgramTitle),
            BoxIcon::Stop);
  }
  return parameters.Accepted();
}

void Application::TellLaunchFaults() {
  QStringList names;
  for (const LaunchFault& fault : FindLaunchFaults()) {
    DebugLine("updown: the variable %s %s\n", fault.name.c_str(),
              fault.missing ? "is missing" : "cannot be used");
    names.append(QString::fromStdString(fault.name));
  }
  if (!names.isEmpty()) {
    window_->Notices().SetNotice(NoticeBar::Source::Launch,
                                 Text(StringId::BadLaunchVariables) + names.join(u", "_qs));
  }
}

void Application::Exec() {
  if (!closed_) {
    QApplication::exec();
  }
}

bool Application::ShutDown() {
  const bool ended = !window_ || window_->ShutDown();
  if (!ended) {
    // Its threads use it still: it stays as long as the process.
    [[maybe_unused]] const MainWindow* kept = window_.release();
  }
  window_.reset();
  signals_.reset();
  return ended;
}

int RunUpDown(int argc, char** argv, const Preparation& prepare) {
  InstallSignalHandlers();
  HoldStandardStreams();
  qInstallMessageHandler(&PrintToolkitMessage);
  std::vector<std::string> arguments(argv, argv + argc);
  if (AnswerOnly(arguments)) {
    return EXIT_SUCCESS;
  }
  LeaveOutSilentBus();
  // The toolkit's own options are none of the program's.
  int ownName = argc > 0 ? 1 : 0;
  const QApplication application(ownName, argv);
  Application app(std::move(arguments));
  if (!app.Start()) {
    return app.ExitCode();
  }
  if (prepare) {
    prepare(app);
  }
  app.Exec();
  if (!app.ShutDown()) {
    std::_Exit(EXIT_SUCCESS);
  }
  return EXIT_SUCCESS;
}

}  // namespace updown
