#pragma once

#include <QString>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "service/operations.h"

namespace updown {

// Where one of a package's two header files is.
enum class HeaderFile : std::uint8_t {
  Missing,
  BeingFetched,
  Here,    // in the cache
  Failed,  // fetched in vain; worth another try after the next listing
};

// What runs on a package, by the user's wish.
enum class PackageWork : std::uint8_t { None, Renaming, Removing };

// What its header says of a package, for the list.
struct PackageTexts {
  QString time;
  QString from;
  QString to;
  QString subject;
};

struct Package {
  explicit Package(DirectoryEntry listed) : entry(std::move(listed)) {}

  const std::string& Name() const { return entry.name; }
  bool Complete() const { return start == HeaderFile::Here && plain == HeaderFile::Here; }
  HeaderFile& File(bool ofStart) { return ofStart ? start : plain; }

  DirectoryEntry entry;
  int row = 0;
  HeaderFile start = HeaderFile::Missing;  // name + "_Start.ini"
  HeaderFile plain = HeaderFile::Missing;  // name + ".ini"
  PackageWork work = PackageWork::None;
  bool workShows = false;             // it takes long enough to be told
  std::optional<PackageTexts> texts;  // nothing: not read since a header file came
};

// The packages in their order, and by name.
class PackageRows {
 public:
  int Count() const { return static_cast<int>(rows_.size()); }
  Package& At(int row) { return *rows_.at(static_cast<std::size_t>(row)); }
  const Package& At(int row) const { return *rows_.at(static_cast<std::size_t>(row)); }
  Package* Find(const std::string& name);  // null if there is none
  bool Has(const std::string& name) const { return byName_.contains(name); }

  using Some = std::vector<std::unique_ptr<Package>>;
  void Insert(int row, Some packages);  // none of them is there yet
  void Remove(int row, int count);
  void Rename(Package& package, const std::string& name);  // to a name that is free

 private:
  void Number(int from);

  Some rows_;
  std::unordered_map<std::string, Package*> byName_;
};

}  // namespace updown
