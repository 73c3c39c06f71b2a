#pragma once

#include <QtGlobal>

namespace updown {

// The tree's name for one of its items. Never reused in a process: a name whose item is gone finds
// nothing.
enum class TreeItem : quint64 { None = 0 };

}  // namespace updown
