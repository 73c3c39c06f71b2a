#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "service/operations.h"

namespace updown {

// Every package name that the tree has seen. It tells the header files of a folder from its
// attachments, also those of another known package. Names are never taken out. Main thread only.
class PackageNames {
 public:
  void Append(std::u16string name) { names_.insert(std::move(name)); }

  // True for P + ".ini" and P + "_Start.ini" of a known P, case for case.
  bool IsPackageIniName(std::u16string_view file) const;

 private:
  std::unordered_set<std::u16string> names_;
};

// The one of this process.
PackageNames& KnownPackageNames();

struct ListedPackage {
  std::u16string name;
  const DirectoryEntry* entry;  // the listing's
};

// The packages of a listing of "/", in its order. A name whose path does not fit the buffers is no
// package.
std::vector<ListedPackage> PackagesIn(const DirectoryList& entries);

}  // namespace updown
