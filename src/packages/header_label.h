#pragma once

#include <QLabel>

namespace updown {

// Shows lines of "label: value" with the values below each other in any font. Its text, and so what
// a screen reader says, is the plain one.
class HeaderLabel : public QLabel {
  Q_OBJECT

 public:
  explicit HeaderLabel(QWidget* parent);

  // Height of a line in device-independent pixels.
  int LineHeight() const { return fontMetrics().height() + 1; }

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace updown
