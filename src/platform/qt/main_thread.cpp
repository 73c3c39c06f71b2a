#include "platform/qt/main_thread.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>

namespace updown {
namespace {

QEvent::Type WakeType() {
  static const int type = QEvent::registerEventType();
  return static_cast<QEvent::Type>(type);
}

}  // namespace

// A wake-up is an event posted to this object.
class MainThread::Receiver : public QObject {
 public:
  void RunOnWake(const std::shared_ptr<PostedCalls>& calls) { calls_ = calls; }
  void Wake() { QCoreApplication::postEvent(this, new QEvent(WakeType())); }

 protected:
  void customEvent(QEvent* event) override {
    if (event->type() == WakeType()) {
      const std::shared_ptr<PostedCalls> calls = calls_;  // a call may destroy this object
      calls->Run();
    }
  }

 private:
  std::shared_ptr<PostedCalls> calls_;
};

MainThread::MainThread()
    : receiver_(std::make_unique<Receiver>()),
      calls_(std::make_shared<PostedCalls>([receiver = receiver_.get()] { receiver->Wake(); })) {
  receiver_->RunOnWake(calls_);
}

MainThread::~MainThread() { Close(); }

}  // namespace updown
