#pragma once

#include <atomic>
#include <string>

namespace updown {

// Copies an entry of one open folder into another one under a name that must be free: a file with
// its bytes, rights and times, a link as a link, a folder with all that is in it. Everything is on
// the disk when it returns true. On false a part of it may be there. Other kinds of entries fail. A
// `stop` (null for none) that is set on the way makes it fail before the next part of a file.
bool CopyEntry(int fromFolder, const std::string& fromName, int toFolder, const std::string& toName,
               const std::atomic<bool>* stop);

}  // namespace updown
