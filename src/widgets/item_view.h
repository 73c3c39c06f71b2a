#pragma once

#include <QTreeView>

namespace updown {

// What all views of the program have in common.
//
// Their actions() are the context menu, with shortcuts, on items and on empty ground, by right
// click, Menu key and Shift+F10. An item under a right click is selected first, unless it is in the
// selection. The menu's object name is the view's with "Menu" behind it.
//
// Tips are the model's Qt::ToolTipRole, which is plain text, or else the text of a cell that does
// not show whole.
//
// A screen reader hears Qt::AccessibleTextRole, or else what the cell shows, and
// Qt::AccessibleDescriptionRole; finds links and presses them (see LinkDelegate), bars with their
// value (see ProgressDelegate), and the enabled actions. Only the last one of any siblings may have
// children.
//
// The selection is paler while another widget has the keyboard, and the current row has a frame
// while this one has.
class ItemView : public QTreeView {
  Q_OBJECT

 public:
  explicit ItemView(QWidget* parent);

 Q_SIGNALS:
  // Time to enable the actions that fit the selection.
  void MenuAboutToOpen();

 protected:
  bool viewportEvent(QEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void initViewItemOption(QStyleOptionViewItem* option) const override;
  void drawRow(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;

 private:
  QString TipOf(const QModelIndex& index) const;
  void OpenMenuByKey();
  void OpenMenu(const QPoint& position);  // in the viewport
};

}  // namespace updown
