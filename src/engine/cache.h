#pragma once

#include <string>
#include <string_view>
#include <unordered_set>

namespace updown {

// The folder of this identity's package headers: one flat folder, files under their names on the
// service. A file that is there is whole, and never fetched again. What is being
// fetched has a name that ends in ".part". Main thread only.
class PackageCache {
 public:
  // Works out the root, makes its folders, and removes what a run that was killed has left
  // unfinished. The folder of the program's file serves when there is no application data folder.
  // Failures show later as files that are not there.
  static PackageCache InitPackageCache(const std::string& identityHash);
  // The root alone, which need not exist. Nothing is made.
  static std::string RootOf(const std::string& identityHash);

  explicit PackageCache(std::string packageCacheRoot);

  const std::string& Root() const { return packageCacheRoot_; }
  std::string PathOf(std::string_view name) const;  // UTF-8; empty for a name that is not safe
  void Delete(std::string_view name) const;
  void Rename(std::string_view name, std::string_view newName) const;

  // The names of all files that are there, by one look into the folder.
  std::unordered_set<std::string> Names() const;

  // Where a fetch of `name` writes, with nothing there; empty for a name that is not safe.
  std::string BeginFetch(std::string_view name) const;
  // Gives the file at `fetchPath`, which has arrived whole, its name. True if it is cached now;
  // false also for a path that no BeginFetch has given.
  bool EndFetch(const std::string& fetchPath) const;
  // Removes what no fetch will finish. No fetch may be under way.
  void RemoveUnfinished() const;

  // True if `path` lies in the cache of this or of any other identity.
  bool Holds(std::string_view path) const;

 private:
  std::string packageCacheRoot_;
};

}  // namespace updown
