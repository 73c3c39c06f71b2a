#pragma once

#include <QAbstractItemView>

namespace updown {

// The context menu of a view: its actions() with their shortcuts, on items and on empty ground, by
// right click, Menu key and Shift+F10. An item under a right click is selected first, unless it is
// in the selection. The menu's object name is the view's with "Menu" behind it.
class ItemViewMenu : public QObject {
  Q_OBJECT

 public:
  explicit ItemViewMenu(QAbstractItemView* view);  // which owns it

 Q_SIGNALS:
  // Time to enable what fits the selection.
  void AboutToOpen();
  void OpenedOnRow(const QModelIndex& index, const QPoint& globalPosition);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void OpenByMouse(const QPoint& position);  // in the viewport
  void OpenByKey();
  void Open(const QModelIndex& index, const QPoint& globalPosition);

  QAbstractItemView* const view_;
};

}  // namespace updown
