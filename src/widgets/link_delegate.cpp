#include "widgets/link_delegate.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <utility>

#include "widgets/contrast.h"

namespace updown {
namespace {

constexpr QPoint kElsewhere{-1, -1};

bool IsLink(const QModelIndex& index) { return index.data(kLinkRole).toBool(); }

}  // namespace

LinkDelegate::LinkDelegate(QAbstractItemView* view)
    : CellDelegate(view), view_(view), viewport_(view->viewport()) {
  view->setItemDelegate(this);
  viewport_->setMouseTracking(true);
  viewport_->installEventFilter(this);
  connect(view, &QAbstractItemView::clicked, this, [this](const QModelIndex& index) {
    if (IsLink(index) && QGuiApplication::keyboardModifiers() == Qt::NoModifier) {
      Q_EMIT Activated(index);
    }
  });
}

void LinkDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
  CellDelegate::initStyleOption(option, index);
  if (!IsLink(index)) {
    return;
  }
  option->font.setUnderline(true);
  const QColor color =
      index == hovered_ ? QColor(Qt::red) : option->palette.color(QPalette::Active, QPalette::Link);
  option->palette.setColor(QPalette::Text,
                           ReadableOn(option->palette.color(QPalette::Base), color));
}

QRect LinkDelegate::LinkRect(const QModelIndex& index) const {
  const QRect cell = view_->visualRect(index);
  if (!IsLink(index) || cell.isEmpty()) {
    return {};
  }
  QStyleOptionViewItem option;
  option.initFrom(view_);
  option.widget = view_;
  option.rect = cell;
  initStyleOption(&option, index);
  const QStyle* style = view_->style();
  const int margin = style->pixelMetric(QStyle::PM_FocusFrameHMargin, &option, view_) + 1;
  const QRect label = style->subElementRect(QStyle::SE_ItemViewItemText, &option, view_)
                          .adjusted(margin, 0, -margin, 0);
  const QSize text = option.fontMetrics.size(Qt::TextSingleLine, option.text);
  return QStyle::alignedRect(option.direction, option.displayAlignment,
                             text.boundedTo(label.size()), label);
}

bool LinkDelegate::eventFilter(QObject* watched, QEvent* event) {
  if (watched != viewport_) {
    return CellDelegate::eventFilter(watched, event);
  }
  switch (event->type()) {
    case QEvent::MouseMove:
      mouse_ = static_cast<QMouseEvent*>(event)->position().toPoint();
      FollowMouse();
      return false;
    case QEvent::Leave:
    case QEvent::Hide:  // also out of the view's destructor: it answers nothing more then
      mouse_ = kElsewhere;
      FollowMouse();
      return false;
    case QEvent::Paint:  // whatever moves rows under a mouse that stands still paints them
      FollowMouse();
      return false;
    default:
      return IsSecondClick(*event);
  }
}

bool LinkDelegate::IsSecondClick(const QEvent& event) {
  if (event.type() == QEvent::MouseButtonDblClick) {
    secondClick_ =
        IsLink(view_->indexAt(static_cast<const QMouseEvent&>(event).position().toPoint()));
    return secondClick_;
  }
  return event.type() == QEvent::MouseButtonRelease && std::exchange(secondClick_, false);
}

void LinkDelegate::FollowMouse() {
  QModelIndex now;
  if (mouse_ != kElsewhere) {
    const QModelIndex under = view_->indexAt(mouse_);
    now = LinkRect(under).contains(mouse_) ? under : QModelIndex();
  }
  if (hovered_ == now) {
    return;
  }
  viewport_->update();
  hovered_ = now;
  now.isValid() ? viewport_->setCursor(Qt::PointingHandCursor) : viewport_->unsetCursor();
}

}  // namespace updown
