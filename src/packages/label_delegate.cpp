#include "packages/label_delegate.h"

#include <QLineEdit>
#include <QPersistentModelIndex>
#include <utility>

namespace updown {

LabelDelegate::LabelDelegate(QIcon selectedImage, EndLabelEdit endLabelEdit, QObject* parent)
    : QStyledItemDelegate(parent),
      selectedImage_(std::move(selectedImage)),
      endLabelEdit_(std::move(endLabelEdit)) {}

void LabelDelegate::setModelData(QWidget* editor, QAbstractItemModel* model,
                                 const QModelIndex& index) const {
  const auto* line = qobject_cast<QLineEdit*>(editor);
  if (line == nullptr) {
    return;
  }
  // A refusal shows a box, and anything may have happened to editor and item by the time it closes.
  const QString text = line->text();
  const QPersistentModelIndex kept(index);
  if (endLabelEdit_(index, text) && kept.isValid()) {
    model->setData(kept, text, Qt::EditRole);
  }
}

void LabelDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
  QStyledItemDelegate::initStyleOption(option, index);
  if ((option->state & QStyle::State_Selected) != 0) {
    option->icon = selectedImage_;
  }
}

}  // namespace updown
