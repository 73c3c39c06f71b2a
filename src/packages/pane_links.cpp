#include "packages/pane_links.h"

namespace updown {

void LinkPanes(CMyFolderTree& tree, CMyFileListFormView& list, CMyFormView& form) {
  using Tree = CMyFolderTree;
  using List = CMyFileListFormView;
  using Form = CMyFormView;
  QObject::connect(&tree, &Tree::FolderListed, &form, &Form::SetCurrentFolder);
  QObject::connect(&tree, &Tree::PackageFound, &list, &List::AddPackageRow);
  QObject::connect(&tree, &Tree::PackagesRefreshed, &list, &List::SelectTopRow);
  QObject::connect(&tree, &Tree::FilesCleared, &form, &Form::ClearAttachments);
  QObject::connect(&tree, &Tree::FileFound, &form, &Form::AddAttachmentRow);

  // The form first: the tree then lists the package's files into it.
  QObject::connect(&list, &List::PackageSelected, &form, &Form::ShowPackage);
  QObject::connect(
      &list, &List::PackageSelected, &tree,
      [&tree](const std::u16string& /*name*/, TreeItem item) { tree.SelectFromList(item); });
  QObject::connect(&list, &List::SelectionCleared, &form, &Form::Clear);
  QObject::connect(&list, &List::PackageDeleted, &tree, &Tree::DeleteItem);
  QObject::connect(&list, &List::RefreshWanted, &tree, &Tree::Refresh);
}

}  // namespace updown
