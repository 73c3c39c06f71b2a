#pragma once

#include <QGroupBox>

namespace updown {

// A frame with its caption in the upper line, as the form's layout takes for granted; its line can
// be seen on a dark ground as well as on a light one.
class GroupFrame : public QGroupBox {
  Q_OBJECT

 public:
  explicit GroupFrame(QWidget* parent) : QGroupBox(parent) {}

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace updown
