#include "widgets/transparent_static.h"

namespace updown {

CTransparentStatic::CTransparentStatic(QWidget* parent) : QLabel(parent) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
  setAutoFillBackground(false);
  setTextFormat(Qt::PlainText);
}

}  // namespace updown
