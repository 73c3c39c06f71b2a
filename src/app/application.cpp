#include "app/application.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QTranslator>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "app/command_line.h"
#include "app/launch_identity.h"
#include "platform/qt/text.h"
#include "platform/unique_fd.h"
#include "resources/qt/texts.h"
#include "resources/texts.h"
#include "widgets/icons.h"
#include "widgets/message_boxes.h"

namespace updown {
namespace {

// Texts of the toolkit's own dialogs, where its translations are installed.
void TranslateToolkit() {
  const QString name = ToQString(CurrentLanguage().qtCatalog);
  auto translator = std::make_unique<QTranslator>(QCoreApplication::instance());
  if (!name.isEmpty() &&
      translator->load(name, QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
    QCoreApplication::installTranslator(translator.release());
  }
}

}  // namespace

Application::Application(std::vector<std::string> arguments) : arguments_(std::move(arguments)) {}

Application::~Application() { ShutDown(); }

bool Application::Start() {
  IgnoreBrokenPipes();
  launch_ = ReadLaunchState();
  SetStringLanguage(launch_.languageId);
  // A second start brings the first one forward whatever its command line says.
  if (!BecomeInstance()) {
    return false;
  }
  TranslateToolkit();
  QGuiApplication::setDesktopFileName(u"net.updown.UpDown"_qs);
  QApplication::setWindowIcon(LoadIcon(Icon::Program));
  QApplication::setQuitOnLastWindowClosed(false);
  if (!CheckCommandLine()) {
    return false;
  }
  window_ = std::make_unique<MainWindow>(launch_, service_, *instanceEvent_);
  QObject::connect(window_.get(), &MainWindow::Closed, window_.get(), [this] {
    closed_ = true;
    QCoreApplication::exit();
  });
  // Up to here a signal ends the process as usual: nothing is lost, and the window's making may
  // wait long for the service.
  signals_ = std::make_unique<TerminationSignals>();
  QObject::connect(signals_.get(), &TerminationSignals::Requested, window_.get(), &QWidget::close);
  window_->show();
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
    ShowBox(nullptr, Text(StringId::InvalidParameters), Text(StringId::ProgramTitle),
            BoxIcon::Stop);
  }
  return parameters.Accepted();
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
  HoldStandardStreams();
  std::vector<std::string> arguments(argv, argv + argc);
  // The toolkit's own options are none of the program's.
  int ownName = argc > 0 ? 1 : 0;
  const QApplication application(ownName, argv);
  Application app(std::move(arguments));
  if (!app.Start()) {
    return 0;
  }
  if (prepare) {
    prepare(app);
  }
  app.Exec();
  if (!app.ShutDown()) {
    std::fflush(nullptr);
    std::_Exit(EXIT_SUCCESS);
  }
  return EXIT_SUCCESS;
}

}  // namespace updown
