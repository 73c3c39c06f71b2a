#pragma once

#include "packages/attachment_model.h"
#include "packages/package_area.h"
#include "widgets/link_list_ctrl.h"

namespace updown {

// The files of a package, each with a link to save it. What starts from them is the owner's
// business; a file names its own folder.
class AttachmentList : public CLinkListCtrl {
  Q_OBJECT

 public:
  explicit AttachmentList(QWidget* parent = nullptr);

  // The same package again leaves the selection on its file.
  void Show(const std::string& package, const PackageFiles& files);

 Q_SIGNALS:
  void SaveWanted(const AttachmentRecord& file);
  void DeleteWanted(const AttachmentRecord& file);
  void TransfersWanted();  // Save without a file

 private:
  void OnCellClicked(int row, int column);
  void SaveSelected();
  void ShowMenu(const QPoint& globalPosition);

  AttachmentModel model_;
};

}  // namespace updown
