#include "status/move_with_progress.h"

#include <QLabel>
#include <QPointer>
#include <QProgressDialog>
#include <QTimer>
#include <chrono>
#include <memory>

#include "platform/qt/text.h"
#include "platform/thread.h"
#include "status/file_move.h"

namespace updown {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kUnseen{200};  // a rename is over by then
constexpr milliseconds kLook{50};

// True when the thread has ended, false if the box went with its owner.
bool WaitInBox(QWidget* owner, const QString& title, const QString& path, const Thread& thread) {
  const QPointer<QProgressDialog> box = new QProgressDialog(QString(), QString(), 0, 0, owner);
  box->setObjectName(QStringLiteral("moveProgress"));
  box->setWindowTitle(title);
  auto* const label = new QLabel(path);
  label->setTextFormat(Qt::PlainText);
  box->setLabel(label);
  box->setWindowModality(Qt::WindowModal);
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, box, [&thread, &box] {
    if (thread.Ended().IsSet()) {
      box->accept();
    }
  });
  timer.start(kLook);
  while (box && !thread.Ended().IsSet()) {  // Escape closes the box, not the move
    box->exec();
  }
  if (!box) {
    return false;
  }
  delete box;
  return true;
}

}  // namespace

std::optional<std::string> MoveWithProgress(QWidget* owner, const QString& title,
                                            const std::string& path, const std::string& folder) {
  auto moved = std::make_shared<std::optional<std::string>>();
  const auto thread = Thread::Start([moved, path, folder] { *moved = MoveLocal(path, folder); });
  if (!thread) {
    return MoveLocal(path, folder);
  }
  if (!thread->Ended().WaitFor(kUnseen) && !WaitInBox(owner, title, FromUtf8(path), *thread)) {
    return std::nullopt;
  }
  return *moved;
}

}  // namespace updown
