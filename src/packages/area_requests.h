#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "service/operations.h"

namespace updown {

// What the panes ask of the file service. Main thread only; each request waits for the answer, and
// its failure has been shown to the user by the time it returns. Paths are UTF-16; what they become
// in UTF-8 must be shorter than kPathCapacity.
class AreaRequests {
 public:
  virtual ~AreaRequests() = default;

  // False, with the user told, if there is no session and none can be had. True also where the
  // failure will show at the first listing.
  virtual bool OpenSession() = 0;
  // Closes it and opens another; false, silently, if that fails.
  virtual bool ReopenSession() = 0;

  // Nothing after a failure.
  virtual std::optional<DirectoryList> ListFolder(const std::u16string& path) = 0;
  // Result codes.
  virtual int RenameEntry(const std::u16string& newPath, const std::u16string& oldPath) = 0;
  virtual int RemoveFile(const std::u16string& path) = 0;
  // With all its files; the code has no sign. The refusal (8199) is not shown.
  virtual int RemovePackage(const std::u16string& path) = 0;

  // Shows "text[code]" in a box and waits for the user; `code` is a string id or a result code of
  // either sign; 0 shows nothing.
  virtual void ReportResult(std::int64_t code) = 0;
};

}  // namespace updown
