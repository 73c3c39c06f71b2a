#pragma once

#include <QString>

namespace updown::demo {

// Puts a task list in place by hand, as a run before this one would have left it: one Queued file
// and one Queued folder of the walk's package, for the client of this identity. The bytes are
// written here, not by the client's own writer.
void WriteStoredTasks(const QString& dataFolder, const QString& identity, const QString& received);

}  // namespace updown::demo
