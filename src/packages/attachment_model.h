#pragma once

#include <QAbstractTableModel>
#include <QIcon>
#include <string>
#include <vector>

#include "service/operations.h"

namespace updown {

namespace attachment_column {
inline constexpr int kName = 0;
inline constexpr int kSize = 1;
inline constexpr int kType = 2;
inline constexpr int kTime = 3;
inline constexpr int kSave = 4;  // a link, without a value
inline constexpr int kCount = 5;
}  // namespace attachment_column

// One file of a package: its entry, and the package in which it lies.
struct AttachmentRecord {
  std::string package;
  DirectoryEntry entry;
  bool removing = false;  // on the service, right now

  const std::string& Name() const { return entry.name; }  // UTF-8
  std::string Path() const { return "/" + package + "/" + entry.name; }

  bool operator==(const AttachmentRecord& other) const;  // whether they look the same
};

// The rows of the attachment list, in the order of the service. Texts are made when asked for.
class AttachmentModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  // The value of a cell, for sorting: a name, bytes, a type, seconds.
  static constexpr int kValueRole = Qt::UserRole + 100;

  explicit AttachmentModel(QObject* parent = nullptr);

  void SetRecords(std::vector<AttachmentRecord> records);
  const std::vector<AttachmentRecord>& Records() const { return records_; }
  const AttachmentRecord& At(const QModelIndex& index) const;  // an index of this model

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;

 private:
  std::vector<AttachmentRecord> records_;
  const QIcon image_;
};

}  // namespace updown
