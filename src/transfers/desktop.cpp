#include "transfers/desktop.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>
#include <QFileDialog>
#include <QFileInfo>
#include <QPointer>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <QUrl>

#include "platform/environment.h"

namespace updown {
namespace {

// A file manager that has to be started first answers late; after this time the folder is opened in
// the plain way.
constexpr int kFileManagerAnswer = 5000;  // ms

constexpr const char* kLaunchVariables[] = {
    kVariableIdentity1, kVariableIdentity2,    kVariableApplication,   kVariableLanguage,
    kVariableRelayPort, kVariableRelayAddress, kVariableRelayClientId, kVariableAttribute110,
};

// The launch variables say who this launch is to the relay, which is no other program's business.
QProcessEnvironment EnvironmentForOthers() {
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  for (const char* name : kLaunchVariables) {
    environment.remove(QString::fromLatin1(name));
  }
  return environment;
}

void OpenPath(const QString& path) {
  const QUrl url = QUrl::fromLocalFile(path);
  const QString opener = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
  if (opener.isEmpty()) {
    QDesktopServices::openUrl(url);
    return;
  }
  QProcess process;
  process.setProgram(opener);
  process.setArguments({url.toString(QUrl::FullyEncoded)});
  process.setProcessEnvironment(EnvironmentForOthers());
  process.setWorkingDirectory(QStringLiteral("/"));
  process.setStandardInputFile(QProcess::nullDevice());
  process.startDetached();
}

void OpenFolderOf(const QString& path) { OpenPath(QFileInfo(path).absolutePath()); }

// A link leads to its target, so that the user sees the file itself.
QString TargetOf(const QString& path) {
  const QString target = QFileInfo(path).canonicalFilePath();
  return target.isEmpty() ? path : target;
}

void ShowInFolder(const QString& path) {
  const QString shown = TargetOf(path);
  const QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) {
    OpenFolderOf(shown);
    return;
  }
  QDBusMessage call = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.FileManager1"),
      QStringLiteral("/org/freedesktop/FileManager1"),
      QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
  call << QStringList{QUrl::fromLocalFile(shown).toString(QUrl::FullyEncoded)} << QString();
  auto* const watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, kFileManagerAnswer),
                                                    QCoreApplication::instance());
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                   [shown](QDBusPendingCallWatcher* answered) {
                     const QDBusPendingReply<> reply = *answered;
                     answered->deleteLater();
                     if (reply.isError()) {
                       OpenFolderOf(shown);
                     }
                   });
}

QString AskFolder(QWidget* owner, const QString& title) {
  auto* const dialog = new QFileDialog(owner, title);
  const QPointer<QFileDialog> guard(dialog);
  dialog->setObjectName(QStringLiteral("folderDialog"));
  dialog->setFileMode(QFileDialog::Directory);
  dialog->setOption(QFileDialog::ShowDirsOnly);
  const bool chosen = dialog->exec() == QDialog::Accepted;
  if (!guard) {  // the window that owns it went meanwhile
    return {};
  }
  const QStringList folders = dialog->selectedFiles();
  delete dialog;
  return chosen && !folders.isEmpty() ? folders.front() : QString();
}

}  // namespace

Desktop SystemDesktop() { return {&OpenPath, &ShowInFolder, &AskFolder}; }

}  // namespace updown
