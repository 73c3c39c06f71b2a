#pragma once

#include <QAccessibleInterface>
#include <QTreeView>

namespace updown {

// What a screen reader finds of a view: a table, or else a tree in which only the last one of any
// siblings has children.
QAccessibleInterface* MakeAccessibleRows(QTreeView* view);

}  // namespace updown
