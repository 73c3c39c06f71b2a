#include "app/app.h"

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
#include "platform/unique_fd.h"
#include "resources/strings.h"
#include "widgets/boxes.h"
#include "widgets/icons.h"

namespace updown {
namespace {

constexpr int kProgramIcon = 128;
constexpr char kOptionsText[] =
    "\n"
    "  -s SERVICE  name of the file service, resolved by the relay\n"
    "  -p PORT     its TCP port; 8080 if not given\n"
    "  --help      this text\n"
    "  --version   which version this is\n"
    "\n"
    "Started by a parent application, which sets eight environment variables: see updown(1).\n";

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

CUpDownApp::CUpDownApp(std::vector<std::string> arguments) : arguments_(std::move(arguments)) {}

CUpDownApp::~CUpDownApp() { ExitInstance(); }

bool CUpDownApp::InitInstance() {
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
  TakeOverEarlierData(launch_.identityHash,
                      EarlierNamesOf(ReadLaunchIdentity(), launch_.CodePage()));
  frame_ = std::make_unique<CMainFrame>(launch_, service_, *instanceEvent_);
  QObject::connect(frame_.get(), &CMainFrame::Closed, frame_.get(), [this] {
    closed_ = true;
    QCoreApplication::exit();
  });
  // Before transfers begin. Up to here a signal ends the process at once: nothing is lost, and the
  // frame's making may wait long for the service.
  signals_ = std::make_unique<TerminationSignals>();
  QObject::connect(signals_.get(), &TerminationSignals::Requested, frame_.get(), &QWidget::close);
  frame_->LoadFrame();
  TellLaunchFaults();
  if (!closed_) {
    frame_->show();
  }
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
    exitCode_ = kUsageError;
    std::fputs(kUsage, stderr);
    // While the box stands a right start of this identity is to find no other.
    instanceEvent_.reset();
    ShowBox(nullptr, Text(StringId::InvalidParameters, u"Invalid parameters!"),
            Text(StringId::ProgramTitle), BoxIcon::Stop);
  }
  return parameters.Accepted();
}

void CUpDownApp::TellLaunchFaults() {
  QStringList names;
  for (const LaunchFault& fault : FindLaunchFaults()) {
    std::fprintf(stderr, "updown: the variable %s %s\n", fault.name.c_str(),
                 fault.missing ? "is missing" : "cannot be used");
    names.append(QString::fromStdString(fault.name));
  }
  if (!names.isEmpty()) {
    frame_->Notices().SetNotice(NoticeBar::Source::Launch,
                                Text(StringId::BadLaunchVariables) + names.join(u", "_qs));
  }
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
  InstallSignalHandlers();
  HoldStandardStreams();
  std::vector<std::string> arguments(argv, argv + argc);
  if (AnswerOnly(arguments)) {
    return EXIT_SUCCESS;
  }
  // The toolkit's own options are none of the program's.
  int ownName = argc > 0 ? 1 : 0;
  const QApplication application(ownName, argv);
  CUpDownApp app(std::move(arguments));
  if (!app.InitInstance()) {
    return app.ExitCode();
  }
  if (prepare) {
    prepare(app);
  }
  app.Exec();
  if (!app.ExitInstance()) {
    std::fflush(nullptr);
    std::_Exit(EXIT_SUCCESS);
  }
  return EXIT_SUCCESS;
}

}  // namespace updown
