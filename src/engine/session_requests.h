#pragma once

#include <string>
#include <vector>

#include "engine/session_answers.h"
#include "engine/session_link.h"

namespace updown {

// What the session's requests do on its connection, each from opening to answer. On the session's
// thread. Paths are UTF-8; one that does not fit the service's buffers is refused without a
// request.

// Whether a failed listing is asked again, once, on a connection made anew.
enum class ListAgain { No, Once };

// A package's new name on the service: its folder, and files in it that carry the old name.
struct FolderRename {
  std::string oldPath;
  std::string newPath;
  struct File {
    std::string oldName;
    std::string newName;
  };
  std::vector<File> files;  // each one is renamed if the folder has it
};

// Whatever fails, the connection is made anew behind it. The listing is asked again if `again` says
// so, or if it was the first request on a connection that had died while it stood idle.
ListingAnswer ListOnLink(SessionLink& link, const std::string& path, ListAgain again, AskedBy by);

ChangeAnswer RemoveFileOnLink(SessionLink& link, const std::string& path);

// The files of a folder one by one, then the folder; ends at the first that fails. An entry whose
// name would lead out of the folder is passed over.
ChangeAnswer RemovePackageOnLink(SessionLink& link, const std::string& path);

ChangeAnswer RenameOnLink(SessionLink& link, const FolderRename& rename);

}  // namespace updown
