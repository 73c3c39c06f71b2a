#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <functional>
#include <string>
#include <vector>

#include "platform/qt/text.h"

namespace updown::test {

// A person who answers each message box as soon as it stands.
class Person {
 public:
  Person() {
    QObject::connect(&eyes_, &QTimer::timeout, &eyes_, [this] { Look(); });
    eyes_.start(0);
  }

  QMessageBox::StandardButton answer = QMessageBox::Ok;
  std::function<void(QMessageBox&)> first;  // done before the answer; may end the box
  std::vector<std::string> seen;            // the texts of the boxes

 private:
  void Look() {
    auto* const top = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (top == nullptr) {
      return;
    }
    const QPointer<QMessageBox> box(top);
    seen.push_back(ToUtf8(box->text()));
    if (first) {
      first(*box);
    }
    if (box && box->isVisible()) {
      QAbstractButton* const button = box->button(answer);
      (button != nullptr ? button : box->button(QMessageBox::Ok))->click();
    }
  }

  QTimer eyes_;
};

}  // namespace updown::test
