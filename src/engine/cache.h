#pragma once

#include <string>
#include <string_view>
#include <unordered_set>

namespace updown {

// The folder of this identity's package headers: one flat folder, files under their names on the
// service. Only existence counts: a file that is there is never fetched again.
class PackageCache {
 public:
  // Works out the root and makes its folders. The folder of the program's file serves when there is
  // no application data folder. Failures show later as files that are not there.
  static PackageCache InitPackageCache(const std::string& identityHash);

  explicit PackageCache(std::string packageCacheRoot);

  const std::string& Root() const { return packageCacheRoot_; }
  std::string PathOf(std::string_view name) const;  // UTF-8; empty for a name that is not safe
  bool IsPackageIniCached(std::string_view name) const;
  void Delete(std::string_view name) const;
  void Rename(std::string_view name, std::string_view newName) const;

  // The names of all files that are there, by one look into the folder.
  std::unordered_set<std::string> Names() const;

 private:
  std::string packageCacheRoot_;
};

}  // namespace updown
