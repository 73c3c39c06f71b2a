#pragma once

#include <QLabel>

namespace updown {

// A text that lets what lies behind it show through and takes no mouse input.
class CTransparentStatic : public QLabel {
  Q_OBJECT

 public:
  explicit CTransparentStatic(QWidget* parent = nullptr);
};

}  // namespace updown
