#include "platform/qt/message_target.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <memory>
#include <utility>

namespace updown {
namespace {

// Ties the main thread's queue to Qt's event loop: a wake-up is an event posted to this object.
class MessagePump : public QObject {
 public:
  MessagePump() : queue_([this] { QCoreApplication::postEvent(this, new QEvent(WakeType())); }) {}

  MessageQueue& Queue() { return queue_; }

  bool event(QEvent* event) override {
    if (event->type() != WakeType()) {
      return QObject::event(event);
    }
    queue_.Dispatch();
    return true;
  }

 private:
  static QEvent::Type WakeType() {
    static const int type = QEvent::registerEventType();
    return static_cast<QEvent::Type>(type);
  }

  MessageQueue queue_;  // goes first: from then on nobody posts to this object
};

std::unique_ptr<MessagePump>& CurrentPump() {
  static auto& pump = *new std::unique_ptr<MessagePump>;  // never destroyed
  return pump;
}

// Called by Qt at the start of the application's end, with the event loop still whole.
void EndPump() { CurrentPump().reset(); }

MessagePump& PumpOfApplication() {
  std::unique_ptr<MessagePump>& pump = CurrentPump();
  if (!pump) {
    pump = std::make_unique<MessagePump>();
    qAddPostRoutine(EndPump);
  }
  return *pump;
}

}  // namespace

MessageTarget::MessageTarget(WindowProcedure procedure)
    : handle_(PumpOfApplication().Queue().Register(std::move(procedure))) {}

MessageTarget::~MessageTarget() {
  // With the application that it was made in, the handle is gone already.
  if (MessagePump* pump = CurrentPump().get(); pump != nullptr) {
    pump->Queue().Unregister(handle_);
  }
}

}  // namespace updown
