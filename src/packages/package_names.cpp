#include "packages/package_names.h"

#include "engine/package.h"
#include "localdata/file_names.h"

namespace updown {

bool PackageNames::IsPackageIniName(std::u16string_view file) const {
  for (const std::u16string_view ending : {u"_Start.ini", u".ini"}) {
    if (file.ends_with(ending) &&
        names_.contains(std::u16string(file.substr(0, file.size() - ending.size())))) {
      return true;
    }
  }
  return false;
}

PackageNames& KnownPackageNames() {
  static PackageNames names;
  return names;
}

std::vector<ListedPackage> PackagesIn(const DirectoryList& entries) {
  std::vector<ListedPackage> packages;
  for (const DirectoryEntry& entry : entries) {
    if (entry.type != kEntryFolder || entry.name.size() + 1 >= kPathCapacity) {
      continue;
    }
    std::u16string name = Utf8ToWideName(entry.name);
    if (IsPackageName(name)) {
      packages.push_back({std::move(name), &entry});
    }
  }
  return packages;
}

}  // namespace updown
