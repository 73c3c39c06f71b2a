#pragma once

#include <QAbstractItemView>
#include <QPersistentModelIndex>
#include <QPoint>

#include "widgets/cell_delegate.h"

namespace updown {

// A cell whose model gives true for this role is a link.
inline constexpr int kLinkRole = Qt::UserRole + 301;

// Paints links underlined, and in another colour and with a hand while the mouse is over their
// text. A screen reader finds them with the role Link and an action to press them.
class LinkDelegate : public CellDelegate {
  Q_OBJECT

 public:
  // Owned by the view, whose delegate it becomes: for all cells, other ones are painted as ever.
  explicit LinkDelegate(QAbstractItemView* view);

  // Where the link's text stands in the viewport; empty for a cell that is no link.
  QRect LinkRect(const QModelIndex& index) const;
  QModelIndex HoveredLink() const { return hovered_; }

 Q_SIGNALS:
  // A click on the link's cell, or a press by a screen reader; its row is selected by then. A
  // double click on a link is one click, and no doubleClicked() or activated() of the view.
  void Activated(const QModelIndex& index);

 protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  bool IsSecondClick(const QEvent& event);
  void FollowMouse();

  QAbstractItemView* const view_;
  QWidget* const viewport_;  // of view_, which cannot be asked for it while it goes
  QPoint mouse_{-1, -1};     // in the viewport; off it while the mouse is elsewhere
  QPersistentModelIndex hovered_;
  bool secondClick_ = false;
};

}  // namespace updown
