#pragma once

#include <QAbstractTableModel>
#include <QString>
#include <array>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

#include "engine/transfer_task.h"

namespace updown {

enum class StatusColumn : int { SourceEnd, TargetEnd, Transferred, Progress, Rate, Remaining };
inline constexpr int kStatusColumns = 6;

// The image of a row, in column 0.
enum class RowImage : int { WaitingUpload, WaitingDownload, Finished, Failed, Stopped };
inline constexpr int kRowImages = 5;

// The image for a state, or `otherwise` for a state that has none.
RowImage ImageOfState(TransferState state, std::uint32_t direction, RowImage otherwise);

// The rows of the status window: six texts and an image each, as they were last set, and the task
// that they tell of. A row does not keep its task alive: once the task is gone from the queue and
// from its worker, the row has none. Main thread only.
class TransferModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  explicit TransferModel(QObject* parent = nullptr);

  using Texts = std::array<QString, kStatusColumns>;
  void Append(const TaskPointer& task, Texts texts, RowImage image);
  void Remove(int row);

  TaskPointer TaskAt(int row) const;  // null if the row's task is gone, or there is no such row
  int RowOfTask(TaskId id) const;     // -1 if there is none

  const QString& TextAt(int row, StatusColumn column) const;
  void SetText(int row, StatusColumn column, const QString& text);
  // The tip of the Transferred cell, in lines; empty: the cell's own text.
  void SetDetails(int row, const QString& details);
  RowImage ImageAt(int row) const;
  void SetImage(int row, RowImage image);

  // Tells the views that the task behind the row has changed, whatever the texts say.
  void Touch(int row);

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  struct Row {
    TaskId id = 0;
    std::weak_ptr<TransferTask> task;
    Texts texts;
    RowImage image = RowImage::WaitingDownload;
    QString details;
  };

  const Row& At(int row) const { return rows_[static_cast<std::size_t>(row)]; }
  Row& At(int row) { return rows_[static_cast<std::size_t>(row)]; }
  bool Holds(int row) const { return row >= 0 && static_cast<std::size_t>(row) < rows_.size(); }
  QString TipText(int row, StatusColumn column) const;
  QVariant AccessibleText(int row, StatusColumn column) const;

  std::vector<Row> rows_;
  std::unordered_map<TaskId, int> rowOfTask_;
};

}  // namespace updown
