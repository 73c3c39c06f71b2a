#include <QScopeGuard>

#include "engine/frame_messages.h"
#include "engine/package.h"
#include "localdata/file_names.h"
#include "packages/my_file_list_form_view.h"
#include "service/result_codes.h"
#include "widgets/boxes.h"
#include "widgets/busy_pointer.h"

// Deletion of packages, on the service and in the cache.

namespace updown {

void CMyFileListFormView::DeleteSelectedPackages() {
  if (!HaveFrame() || list_->SelectedRow() < 0 || !Confirm(window(), StringId::ConfirmDelete)) {
    return;
  }
  const int row = list_->SelectedRow();
  if (row < 0) {  // gone while the question stood
    return;
  }
  ClearForm();
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
  const LongParam treeItem = model_->Row(row).treeItem;
  const std::u16string name = Utf8ToWideName(model_->Row(row).name);
  const std::u16string path = u"/" + name;
  const MessageResult code =
      SendWindowMessage(frameWindow_, frame_message::kRemovePackage, 0, PointerParam(&path));
  if (code != result::kOk && code != -result::kAccessRefused) {
    return false;
  }
  if (IsWindow(treeWindow_)) {
    SendWindowMessage(treeWindow_, frame_message::kDeleteItem, 0, treeItem);
  }
  frame_.Cache().Delete(WideToUtf8Name(IniNameOf(name)));
  frame_.Cache().Delete(WideToUtf8Name(StartIniNameOf(name)));
  // A box about one of its files may have stood meanwhile: only this package's row may go.
  return model_->HasRow(row) && model_->Row(row).treeItem == treeItem;
}

}  // namespace updown
