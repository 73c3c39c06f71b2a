#pragma once

#include <string>

#include "service/operations.h"

namespace updown {

// What a folder task needs from above: the entries of a folder of the service.
class FolderLister {
 public:
  enum class Outcome {
    Listed,  // there is at least one entry
    Failed,  // the user has been told why
    Gone,    // nobody lists any more: the program is on its way out
  };
  struct Answer {
    Outcome outcome = Outcome::Gone;
    DirectoryList entries;
  };

  virtual ~FolderLister() = default;

  // `path` in UTF-8, ending in "/". Called on the worker's thread, which waits for the answer; the
  // caller holds no lock.
  virtual Answer List(const std::string& path) = 0;
};

}  // namespace updown
