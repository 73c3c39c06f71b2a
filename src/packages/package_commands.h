#pragma once

#include <QAction>
#include <QKeySequence>
#include <QMessageBox>
#include <QPointer>
#include <QString>
#include <QWidget>
#include <vector>

#include "packages/attachment_model.h"
#include "packages/package_area.h"
#include "packages/package_downloads.h"
#include "resources/string_id.h"

namespace updown {

// A command of one pane, whose keys act while that pane has the focus.
QAction* MakeAction(QObject* owner, StringId text, const QString& name,
                    const QList<QKeySequence>& keys);

// What the user does to packages and files by hand: asks where something would be lost, hands the
// wish to the area or to the transfers, and shows a box where it failed. Main thread.
class PackageCommands : public QObject {
  Q_OBJECT

 public:
  // All outlive it. Boxes stand before `owner`.
  PackageCommands(PackageArea& area, PackageDownloads& downloads, QWidget* owner);

  // Saves the files of the selected package; for the menu of each pane that shows it.
  QAction* SaveAllAction() { return saveAll_; }

  // By value: what is selected may be another package while the question stands.
  void DeletePackage(std::string name);
  void DeleteFiles(const std::vector<AttachmentRecord>& files);
  void SaveFile(const AttachmentRecord& file);

 Q_SIGNALS:
  void TransfersWanted();  // the status window is to come forward

 private:
  void RenamePackage(const QString& name, const QString& newName);
  void Report(std::uint32_t code, const QString& name = {});
  bool MayDelete(const AttachmentRecord& file);
  bool Refused(const std::string& path);
  void SavePackage();
  bool Ask(const QString& question, StringId verb);

  PackageArea& area_;
  PackageDownloads& downloads_;
  QWidget* owner_;
  QAction* saveAll_;
  QPointer<QMessageBox> told_;  // the last failure, while its box stands
  std::uint32_t toldCode_ = 0;
};

}  // namespace updown
