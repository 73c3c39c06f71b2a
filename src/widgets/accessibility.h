#pragma once

#include <QTreeView>

namespace updown {

// Completes what the toolkit tells screen readers, from the first call on: handles of splitters are
// separators named after what they divide, and a notice is announced.
void InstallAccessibility();

// And for the cells of a view, at the begin of its constructor: links with their role and an action
// to press them (see LinkDelegate), bars with their value (see ProgressDelegate), and the focus
// claimed by no cell while the view has it not. Texts come from Qt::AccessibleTextRole, or else
// what the cell shows, and Qt::AccessibleDescriptionRole.
void MakeAccessible(QTreeView* view);

}  // namespace updown
