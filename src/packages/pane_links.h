#pragma once

#include "packages/my_file_list_form_view.h"
#include "packages/my_folder_tree.h"
#include "packages/my_form_view.h"

namespace updown {

// Ties the three panes together, which do not know each other: what one of them tells, the others
// take at once. The tree's PackagesShown is left to the caller.
void LinkPanes(CMyFolderTree& tree, CMyFileListFormView& list, CMyFormView& form);

}  // namespace updown
