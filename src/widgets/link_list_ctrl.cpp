#include "widgets/link_list_ctrl.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QToolTip>
#include <utility>

namespace updown {
namespace {

constexpr int kTipWidth = 300;

// Draws link cells: the row's background by the style, the text at LinkTextRect.
class OldLinkDelegate : public QStyledItemDelegate {
 public:
  explicit OldLinkDelegate(CLinkListCtrl* list) : QStyledItemDelegate(list), list_(list) {}

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    if (!list_->HasLink(index.row(), index.column())) {
      QStyledItemDelegate::paint(painter, option, index);
      return;
    }
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    const QString text = std::exchange(cell.text, QString());
    list_->style()->drawControl(QStyle::CE_ItemViewItem, &cell, painter, list_);

    painter->save();
    painter->setClipRect(option.rect, Qt::IntersectClip);
    QFont font = cell.font;
    font.setUnderline(true);
    painter->setFont(font);
    const bool selected = (cell.state & QStyle::State_Selected) != 0;
    const auto group =
        (cell.state & QStyle::State_Active) != 0 ? QPalette::Active : QPalette::Inactive;
    painter->setPen(selected
                        ? cell.palette.color(group, QPalette::HighlightedText)
                        : LinkColor(cell.palette, list_->LinkHover(index.row(), index.column())));
    painter->drawText(list_->LinkTextRect(index.row(), index.column()),
                      Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine | Qt::TextDontClip,
                      text);
    painter->restore();
  }

 private:
  CLinkListCtrl* list_;
};

}  // namespace

CLinkListCtrl::CLinkListCtrl(QWidget* parent) : RowListView(parent) {
  setHeaderHidden(true);
  setMouseTracking(true);
  viewport()->installEventFilter(this);
  setItemDelegate(new OldLinkDelegate(this));
}

CLinkListCtrl::~CLinkListCtrl() = default;

bool CLinkListCtrl::AddLink(int row, int column) {
  if (row < 0 || row >= RowCount() || column < 0 || column >= ColumnCount()) {
    return false;
  }
  links_.try_emplace(MakeCellKey(row, column));
  viewport()->update();  // where the cell stands is worked out once for all rows that come together
  return true;
}

bool CLinkListCtrl::HasLink(int row, int column) const {
  return links_.find(MakeCellKey(row, column)) != links_.end();
}

bool CLinkListCtrl::LinkHover(int row, int column) const {
  const auto link = links_.find(MakeCellKey(row, column));
  return link != links_.end() && link->second.hover;
}

void CLinkListCtrl::SetLinkHover(int row, int column, bool hover) {
  const auto link = links_.find(MakeCellKey(row, column));
  if (link == links_.end()) {
    return;
  }
  link->second.hover = hover;
  InvalidateCell(row, column);
  viewport()->setCursor(hover ? Qt::PointingHandCursor : Qt::ArrowCursor);
}

QRect CLinkListCtrl::LabelRect(const QModelIndex& index) const {
  QRect rect = visualRect(index);
  if (!index.data(Qt::DecorationRole).isNull()) {
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    const int margin = style()->pixelMetric(QStyle::PM_FocusFrameHMargin, &option, this) + 1;
    rect.setLeft(rect.left() + option.decorationSize.width() + 2 * margin);
  }
  return rect;
}

QRect CLinkListCtrl::LinkTextRect(int row, int column) const {
  const QModelIndex index = CellAt(row, column);
  if (!index.isValid()) {
    return {};
  }
  const QFontMetrics metrics(font());
  const QString text = index.data().toString();
  const QVariant format = model()->headerData(column, Qt::Horizontal, Qt::TextAlignmentRole);
  return LinkTextRectIn(LabelRect(index), QSize(metrics.horizontalAdvance(text), metrics.height()),
                        Qt::Alignment(format.toInt()));
}

void CLinkListCtrl::InvalidateCell(int row, int column) {
  viewport()->update(visualRect(CellAt(row, column)));
}

void CLinkListCtrl::SetCellTip(int row, int column, const QString& text) {
  tips_[MakeCellKey(row, column)] = text;
}

QString CLinkListCtrl::GetCellTip(int row, int column) const {
  const auto tip = tips_.find(MakeCellKey(row, column));
  return tip != tips_.end() ? tip->second : QString();
}

void CLinkListCtrl::DeleteAllTips() { tips_.clear(); }

bool CLinkListCtrl::DeleteAllItems() {
  const int rows = RowCount();
  if (rows > 0 && !model()->removeRows(0, rows)) {
    return false;
  }
  DeleteAllTips();
  return true;
}

bool CLinkListCtrl::DeleteItem(int row) {
  if (row < 0 || row >= RowCount() || !model()->removeRow(row)) {
    return false;
  }
  tips_.erase(tips_.lower_bound(MakeCellKey(row, 0)), tips_.lower_bound(MakeCellKey(row + 1, 0)));
  return true;
}

void CLinkListCtrl::mousePressEvent(QMouseEvent* event) {
  pressed_ = event->button() == Qt::LeftButton;
  RowListView::mousePressEvent(event);
}

void CLinkListCtrl::mouseMoveEvent(QMouseEvent* event) {
  const QPoint point = event->position().toPoint();
  const QModelIndex index = indexAt(point);
  LinkHit hit{index.row(), index.column(), false};
  hit.over = index.isValid() && HasLink(index.row(), index.column()) &&
             LinkTextRect(hit.row, hit.column).contains(point);
  for (const HoverChange& change :
       HoverChanges(lastHit_, HasLink(lastHit_.row, lastHit_.column), hit)) {
    SetLinkHover(change.row, change.column, change.hover);
  }
  lastHit_ = hit;
  RowListView::mouseMoveEvent(event);
}

// The clicks are told last: the owner may open a dialog or empty the list.
void CLinkListCtrl::mouseReleaseEvent(QMouseEvent* event) {
  const QPoint position = event->position().toPoint();
  const QModelIndex index = indexAt(position);
  const bool clicked = std::exchange(pressed_, false) && event->button() == Qt::LeftButton;
  RowListView::mouseReleaseEvent(event);
  if (clicked) {
    Q_EMIT CellClicked(index.row(), columnAt(position.x()));
  }
}

void CLinkListCtrl::mouseDoubleClickEvent(QMouseEvent* event) {
  RowListView::mouseDoubleClickEvent(event);
  pressed_ = false;
  if (event->button() == Qt::LeftButton) {
    Q_EMIT RowActivated();
  }
}

void CLinkListCtrl::keyPressEvent(QKeyEvent* event) {
  if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && !event->isAutoRepeat()) {
    event->accept();
    Q_EMIT RowActivated();
    return;
  }
  RowListView::keyPressEvent(event);
}

bool CLinkListCtrl::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::ToolTip || watched != viewport()) {
    return RowListView::eventFilter(watched, event);
  }
  const auto* help = static_cast<QHelpEvent*>(event);
  if (!ShowTip(help->pos(), help->globalPos())) {
    QToolTip::hideText();
    event->ignore();
  }
  return true;
}

bool CLinkListCtrl::ShowTip(const QPoint& position, const QPoint& globalPosition) {
  const QModelIndex index = indexAt(position);
  const QString tip = GetCellTip(index.row(), index.column());
  if (tip.isEmpty() || !LabelRect(index).contains(position)) {
    return false;
  }
  QToolTip::showText(globalPosition, TipHtml(tip, QToolTip::font(), kTipWidth), viewport(),
                     visualRect(index));
  return true;
}

}  // namespace updown
