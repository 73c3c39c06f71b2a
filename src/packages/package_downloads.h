#pragma once

#include <string>

namespace updown {

// What the panes let be fetched. Main thread only. Names and paths of the service are UTF-8 where
// they are std::string.
class PackageDownloads {
 public:
  virtual ~PackageDownloads() = default;

  // Puts the stored tasks into the queue while that is empty.
  virtual void RestoreTasks() = 0;

  // A header file, into the cache and without a row in the status window.
  virtual bool IsQueued(const std::u16string& path) = 0;
  virtual void FetchHeader(const std::string& name, const std::string& path) = 0;

  // A file for the user.
  virtual bool StreamLimitReached() const = 0;
  virtual bool IsDuplicate(const std::u16string& path) = 0;  // the user has been told then
  // Asks for the target and makes the task; true if there is one.
  virtual bool SaveFile(const std::string& name, const std::string& path) = 0;
};

}  // namespace updown
