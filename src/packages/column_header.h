#pragma once

#include <QAbstractItemView>
#include <QHeaderView>
#include <vector>

namespace updown {

// A heading that sorts, with columns as wide as a number of characters, one of which takes the room
// that is left. Another font scales them all, also those whose width the user has set.
class ColumnHeader : public QHeaderView {
  Q_OBJECT

 public:
  // The view has its model and its root already, and takes the header with setHeader.
  ColumnHeader(std::vector<int> characters, int stretched, QAbstractItemView* view);

 protected:
  void changeEvent(QEvent* event) override;

 private:
  int characterWidth_;
};

}  // namespace updown
