#pragma once

#include <QIcon>
#include <QStyledItemDelegate>
#include <functional>

namespace updown {

// Paints the tree's labels (with another image on the selected one) and ends their editing: the new
// label stays only if its owner agrees.
class LabelDelegate : public QStyledItemDelegate {
 public:
  using EndLabelEdit = std::function<bool(const QModelIndex& index, const QString& text)>;

  LabelDelegate(QIcon selectedImage, EndLabelEdit endLabelEdit, QObject* parent);

  void setModelData(QWidget* editor, QAbstractItemModel* model,
                    const QModelIndex& index) const override;

 protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;

 private:
  QIcon selectedImage_;
  EndLabelEdit endLabelEdit_;
};

}  // namespace updown
