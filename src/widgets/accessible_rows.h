#pragma once

class QAccessibleInterface;

namespace updown {

class RowListView;

// The list as a table of cells for a screen reader: header cells first, then the rows' cells, link
// cells with the role of a link.
QAccessibleInterface* MakeAccessibleRows(RowListView* list);

}  // namespace updown
