#include "transfers/move_box.h"

#include <QEventLoop>
#include <QLabel>
#include <QPointer>
#include <QProgressDialog>
#include <QThread>
#include <QTimer>
#include <filesystem>
#include <memory>

#include "platform/qt/text.h"
#include "resources/qt/texts.h"
#include "transfers/local_files.h"
#include "widgets/message_boxes.h"

namespace updown {
namespace {

constexpr int kUnseenMs = 200;  // a rename is over by then
constexpr int kLookMs = 50;
constexpr int kExitWaitMs = 1000;  // the whole exit has two seconds
constexpr int kParts = 1000;       // of the box's bar

struct MoveJob {
  MoveProgress progress;
  std::error_code error = std::make_error_code(std::errc::operation_canceled);
};

// Or a link, or what else is there and no folder.
bool IsFile(const std::string& path) {
  std::error_code ignored;
  const auto status = std::filesystem::symlink_status(path, ignored);
  return std::filesystem::exists(status) && !std::filesystem::is_directory(status);
}

QString NameOf(const std::string& path) {
  return FromUtf8(std::filesystem::path(path).filename().string());
}

QProgressDialog* MakeBox(QWidget* owner, const std::string& path) {
  auto* const box = new QProgressDialog(owner);
  box->setObjectName(QStringLiteral("moveProgress"));
  box->setWindowTitle(Text(StringId::MoveFile));
  auto* const label = new QLabel(FromUtf8(path));
  label->setTextFormat(Qt::PlainText);
  box->setLabel(label);
  box->setCancelButtonText(Text(StringId::Cancel));
  box->setWindowModality(Qt::WindowModal);
  box->setAutoClose(false);
  box->setAutoReset(false);
  box->setMinimumDuration(kUnseenMs);
  box->setValue(0);  // the time counts from here, if the range is none of a busy box yet
  box->setRange(0, 0);
  return box;
}

void ShowProgress(QProgressDialog& box, const MoveProgress& progress) {
  const std::uint64_t total = progress.totalBytes;
  if (total > 0 && !progress.stop) {
    const double part = static_cast<double>(progress.copiedBytes) / static_cast<double>(total);
    box.setRange(0, kParts);
    box.setValue(static_cast<int>(kParts * part));
  }
}

// Until the thread or the program ends. A loop of its own, because the end of the program ends
// every loop: one that is entered again would hold up the exit.
void WaitInBox(QWidget* owner, const std::string& path, QThread& thread, MoveProgress& progress) {
  const QPointer<QProgressDialog> box = MakeBox(owner, path);
  QEventLoop loop;
  QTimer timer;
  QObject::connect(box, &QProgressDialog::canceled, &loop, [&progress] { progress.stop = true; });
  QObject::connect(box, &QObject::destroyed, &loop, &QEventLoop::quit);
  QObject::connect(&thread, &QThread::finished, &loop, &QEventLoop::quit);
  QObject::connect(&timer, &QTimer::timeout, &loop, [&box, &progress] {
    if (box) {
      ShowProgress(*box, progress);
    }
  });
  timer.start(kLookMs);
  thread.start();
  loop.exec();
  delete box;
}

std::error_code Move(QWidget* owner, const std::string& from, const std::string& to, bool replace) {
  const auto job = std::make_shared<MoveJob>();
  QThread* const thread = QThread::create(
      [job, from, to, replace] { job->error = MoveLocal(from, to, replace, job->progress); });
  WaitInBox(owner, from, *thread, job->progress);
  job->progress.stop = true;
  if (!thread->wait(kExitWaitMs)) {  // left alone with what it holds; the process ends
    return std::make_error_code(std::errc::operation_canceled);
  }
  delete thread;
  return job->error;
}

}  // namespace

MoveEnd MoveInBox(QWidget* owner, const std::string& path, const std::string& target) {
  const QPointer<QWidget> alive(owner);
  const bool replace = IsFile(path) && IsFile(target);
  if (replace &&
      (!Confirm(owner, Text(StringId::ConfirmReplace).arg(NameOf(path)), Text(StringId::Replace)) ||
       !alive)) {
    return MoveEnd::Left;
  }
  const std::error_code error = Move(owner, path, target, replace);
  if (error == std::errc::operation_canceled) {
    return MoveEnd::Cancelled;
  }
  if (error && alive) {
    ShowBox(owner, Text(StringId::MoveFailed).arg(NameOf(path)) + u'\n' + FromUtf8(error.message()),
            Text(StringId::ProgramTitle), BoxIcon::Exclamation);
  }
  return error ? MoveEnd::Left : MoveEnd::Moved;
}

}  // namespace updown
