#pragma once

#include <string>

namespace updown {

// Removes what the path (UTF-8) names, asking nothing: a file, a link itself, or a folder with all
// that is in it. Goes nowhere beyond: links inside are removed and not followed, and other file
// systems mounted inside are left alone. Nothing to undo it.
//
// True if nothing is left under the path, also if nothing was there. After a failure what could be
// removed is gone.
bool DeleteLocal(const std::string& path);

// The same for an entry of an open folder.
bool RemoveEntry(int folder, const std::string& name);

}  // namespace updown
