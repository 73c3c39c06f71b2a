#pragma once

#include <string>

namespace updown {

// The transfers as the browsing windows need them. Main thread only; names and paths of the service
// in UTF-8.
class PackageDownloads {
 public:
  virtual ~PackageDownloads() = default;

  virtual bool StreamLimitReached() const = 0;
  // Whether the user has this file, or a folder around it, among the transfers already.
  virtual bool IsDuplicate(const std::string& path) const = 0;
  // Asks for the target and makes the task; true if there is one.
  virtual bool SaveFile(const std::string& name, const std::string& path) = 0;
  // Asks for a folder and makes a task that fetches the files of the package into a new one in
  // there, which has the package's name; true if there is one.
  virtual bool SavePackage(const std::string& package) = 0;
};

}  // namespace updown
