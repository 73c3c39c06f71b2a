#pragma once

#include <QAbstractTableModel>
#include <QIcon>
#include <vector>

#include "packages/attachment_record.h"

namespace updown {

// The rows of the attachment list, in the order of the service. Texts are made when asked for.
class AttachmentModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  explicit AttachmentModel(QObject* parent = nullptr);

  void SetRecords(std::vector<AttachmentRecord> records);
  const std::vector<AttachmentRecord>& Records() const { return records_; }
  const AttachmentRecord* Find(int row) const;  // null if there is no such row

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;

 private:
  std::vector<AttachmentRecord> records_;
  QIcon folderImage_;
  QIcon fileImage_;
};

}  // namespace updown
