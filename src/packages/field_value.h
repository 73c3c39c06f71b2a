#pragma once

#include <QLineEdit>

namespace updown {

// A value of one line beside its label: can be selected and copied, ends in an ellipsis where it
// does not fit, and shows whole in a tip and, by the arrow keys, while it has the focus.
class FieldValue : public QLineEdit {
  Q_OBJECT

 public:
  explicit FieldValue(QWidget* parent = nullptr);

  void SetValue(const QString& value);

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  QRect TextRect() const;
  bool IsCut() const;
};

}  // namespace updown
