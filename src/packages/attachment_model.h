#pragma once

#include <QIcon>
#include <vector>

#include "packages/attachment_record.h"
#include "packages/report_model.h"

namespace updown {

// The rows of the attachment list, in the order shown. Texts are made from the record when asked.
class AttachmentModel : public ReportModel {
  Q_OBJECT

 public:
  explicit AttachmentModel(QObject* parent = nullptr);

  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  bool removeRows(int row, int count, const QModelIndex& parent = {}) override;

  const AttachmentRecord& Record(int row) const { return rows_.at(static_cast<std::size_t>(row)); }
  int Append(AttachmentRecord record);   // its row
  void Sort(int column, int direction);  // as CompareAttachments has it; ties keep their order

 protected:
  int RowCount() const override { return static_cast<int>(rows_.size()); }

 private:
  QVariant Decoration(int row) const;

  std::vector<AttachmentRecord> rows_;
  QIcon folderImage_;
  QIcon fileImage_;
};

}  // namespace updown
