#pragma once

#include <string>

namespace updown {

// Copies an entry of one open folder into another one under a name that must be free: a file with
// its bytes, rights and times, a link as a link, a folder with all that is in it. Everything is on
// the disk when it returns true. On false a part of it may be there. Other kinds of entries fail.
bool CopyEntry(int fromFolder, const std::string& fromName, int toFolder,
               const std::string& toName);

}  // namespace updown
