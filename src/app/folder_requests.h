#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "engine/session.h"
#include "service/operations.h"

namespace updown {

// The folder operations that the panes ask for, on the shared session. Main thread; each waits for
// the service. A path of 260 bytes or more in UTF-8 is refused without a request.
//
// `report` is what the window tells the user afterwards (for ReportResult; 0 for nothing), so that
// no box comes up while a request is under way.

struct ListAnswer {
  std::optional<DirectoryList> list;  // none after a failure
  std::int64_t report = 0;
};
ListAnswer RequestListing(SharedSession& session, const std::u16string& path);

struct RequestAnswer {
  int result = 0;
  std::int64_t report = 0;
};
RequestAnswer RequestRemoveFile(SharedSession& session, const std::u16string& path);
RequestAnswer RequestRename(SharedSession& session, const std::u16string& newPath,
                            const std::u16string& oldPath);

// Removes the files of a package's folder one by one, then the folder. The result has no sign. The
// service's refusal (8199) ends it like any failure, but is never reported. An entry whose name
// would lead out of the folder is passed over.
RequestAnswer RequestRemovePackage(SharedSession& session, const std::u16string& path);

}  // namespace updown
