#include "transfers/move_with_progress.h"

#include <QEventLoop>
#include <QLabel>
#include <QPointer>
#include <QProgressDialog>
#include <QTimer>
#include <atomic>
#include <chrono>
#include <memory>

#include "platform/qt/text.h"
#include "platform/thread.h"
#include "transfers/file_move.h"

namespace updown {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kUnseen{200};  // a rename is over by then
constexpr milliseconds kLook{50};
constexpr milliseconds kExitWait{1000};  // the whole exit has two seconds

enum class Waited { Quit, Ended, OwnerGone };

QProgressDialog* MakeBox(QWidget* owner, const QString& title, const QString& path) {
  auto* const box = new QProgressDialog(QString(), QString(), 0, 0, owner);
  box->setObjectName(QStringLiteral("moveProgress"));
  box->setWindowTitle(title);
  auto* const label = new QLabel(path);
  label->setTextFormat(Qt::PlainText);
  box->setLabel(label);
  box->setWindowModality(Qt::WindowModal);
  return box;
}

Waited WaitInBox(QWidget* owner, const QString& title, const QString& path, const Thread& thread) {
  const QPointer<QProgressDialog> box = MakeBox(owner, title, path);
  box->show();
  // A loop of its own, because the end of the program ends every loop: one that is entered again
  // for as long as the thread runs would hold up the exit.
  QEventLoop loop;
  QTimer timer;
  Waited waited = Waited::Quit;
  QObject::connect(&timer, &QTimer::timeout, &loop, [&] {
    if (!box || thread.Ended().IsSet()) {
      waited = box ? Waited::Ended : Waited::OwnerGone;
      loop.quit();
    } else if (box->isHidden()) {  // Escape closes the box, not the move
      box->show();
    }
  });
  timer.start(kLook);
  loop.exec();
  delete box;
  return waited;
}

}  // namespace

std::optional<std::string> MoveWithProgress(QWidget* owner, const QString& title,
                                            const std::string& path, const std::string& folder) {
  auto moved = std::make_shared<std::optional<std::string>>();
  auto stop = std::make_shared<std::atomic<bool>>(false);
  const auto thread = Thread::Start([moved, stop, path, folder] {
    *moved = MoveLocal(path, folder, MoveRoad::Rename, stop.get());
  });
  if (!thread) {
    return MoveLocal(path, folder);
  }
  if (thread->Ended().WaitFor(kUnseen)) {
    return *moved;
  }
  Waited waited = WaitInBox(owner, title, FromUtf8(path), *thread);
  if (waited == Waited::Quit) {
    *stop = true;
    waited = thread->Ended().WaitFor(kExitWait) ? Waited::Ended : Waited::Quit;
  }
  return waited == Waited::Ended ? *moved : std::nullopt;
}

}  // namespace updown
