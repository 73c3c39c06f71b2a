#include <QScopeGuard>

#include "engine/package.h"
#include "localdata/file_names.h"
#include "packages/my_file_list_form_view.h"
#include "service/result_codes.h"
#include "widgets/busy_pointer.h"
#include "widgets/message_boxes.h"

// Deletion of packages, on the service and in the cache.

namespace updown {

void CMyFileListFormView::DeleteSelectedPackages() {
  if (list_->SelectedRow() < 0 || !Confirm(window(), StringId::ConfirmDelete)) {
    return;
  }
  const int row = list_->SelectedRow();
  if (row < 0) {  // gone while the question stood
    return;
  }
  Q_EMIT SelectionCleared();
  {
    const BusyPointer busy;
    QWidget* frameWidget = window();
    setEnabled(false);
    frameWidget->setEnabled(false);
    const auto enableAgain = qScopeGuard([this, frameWidget] {
      frameWidget->setEnabled(true);
      setEnabled(true);
    });
    if (DeletePackage(row)) {
      // Else the view would select the next row in the middle of the removal.
      list_->SelectRow(-1);
      model_->RemoveRow(row);
    }
  }
  list_->SelectRow(row);  // the row that has moved up
  FocusList();
  SelectPackage(list_->SelectedRow());
}

// True if the row is to go. A service that refuses counts as success: the package is gone from view
// until the next refresh.
bool CMyFileListFormView::DeletePackage(int row) {
  if (!model_->HasRow(row)) {
    return false;
  }
  const TreeItem item = model_->Row(row).treeItem;
  const std::u16string name = Utf8ToWideName(model_->Row(row).name);
  const std::u16string path = u"/" + name;
  const int code = area_.RemovePackage(path);
  if (code != result::kOk && code != -result::kAccessRefused) {
    return false;
  }
  Q_EMIT PackageDeleted(item);
  cache_.Delete(WideToUtf8Name(IniNameOf(name)));
  cache_.Delete(WideToUtf8Name(StartIniNameOf(name)));
  // A box about one of its files may have stood meanwhile: only this package's row may go.
  return model_->HasRow(row) && model_->Row(row).treeItem == item;
}

}  // namespace updown
