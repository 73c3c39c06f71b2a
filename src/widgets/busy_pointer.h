#pragma once

#include <QObject>

namespace updown {

// Shows the pointer as busy while it lives, except while a message box waits for the user.
// May be nested. Main thread, on the stack.
class BusyPointer : public QObject {
 public:
  BusyPointer();
  ~BusyPointer() override;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  int boxes_ = 0;  // modal windows that stand on the screen
};

}  // namespace updown
