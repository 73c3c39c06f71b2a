#pragma once

#include <QSplitter>

namespace updown {

// Two panes with a bar of 4 device-independent pixels between them; panes can be dragged shut.
class CMySplitter : public QSplitter {
  Q_OBJECT

 public:
  explicit CMySplitter(Qt::Orientation orientation, QWidget* parent = nullptr);
};

}  // namespace updown
