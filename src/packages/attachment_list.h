#pragma once

#include <QAction>
#include <QSortFilterProxyModel>

#include "packages/attachment_model.h"
#include "packages/package_area.h"
#include "packages/package_commands.h"
#include "widgets/row_list_view.h"

namespace updown {

// The files of a package, each with a link to save it; several can be selected for deletion. A file
// names its own folder.
class AttachmentList : public RowListView {
  Q_OBJECT

 public:
  AttachmentList(PackageCommands& commands, QWidget* parent);  // the commands outlive it

  // The same package again leaves the selection on its files.
  void Show(const std::string& package, const PackageFiles& files);

 protected:
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

 private:
  const AttachmentRecord& At(const QModelIndex& index) const;
  std::vector<AttachmentRecord> Selected() const;
  void SaveSelected();
  void UpdateActions();

  PackageCommands& commands_;
  AttachmentModel model_;
  QSortFilterProxyModel sorted_;
  QAction* save_;
  QAction* delete_;
};

}  // namespace updown
