#pragma once

#include <QPointer>
#include <QString>
#include <QWidget>

#include "packages/attachment_record.h"
#include "packages/package_area.h"
#include "packages/package_downloads.h"

namespace updown {

// What the user does to packages and files by hand: asks where something would be lost, hands the
// wish to the area or to the transfers, and shows a box where it failed. Main thread.
class PackageCommands : public QObject {
  Q_OBJECT

 public:
  // All outlive it. Boxes stand before `owner`.
  PackageCommands(PackageArea& area, PackageDownloads& downloads, QWidget* owner);

  void DeletePackage(const QString& name);
  void RenamePackage(const QString& name, const QString& newName);
  void DeleteFile(const AttachmentRecord& file);
  void SaveFile(const AttachmentRecord& file);

 Q_SIGNALS:
  void TransfersWanted();  // the status window is to come forward

 private:
  void Report(std::uint32_t code, const QString& name = {});
  bool Saved(const AttachmentRecord& file);

  PackageArea& area_;
  PackageDownloads& downloads_;
  QWidget* owner_;
};

}  // namespace updown
