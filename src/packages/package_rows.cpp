#include "packages/package_rows.h"

#include <iterator>

namespace updown {

Package* PackageRows::Find(const std::string& name) {
  const auto found = byName_.find(name);
  return found == byName_.end() ? nullptr : found->second;
}

void PackageRows::Insert(int row, Some packages) {
  for (const auto& package : packages) {
    byName_.emplace(package->Name(), package.get());
  }
  rows_.insert(rows_.begin() + row, std::make_move_iterator(packages.begin()),
               std::make_move_iterator(packages.end()));
  Number(row);
}

void PackageRows::Remove(int row, int count) {
  const auto first = rows_.begin() + row;
  for (auto package = first; package != first + count; ++package) {
    byName_.erase((*package)->Name());
  }
  rows_.erase(first, first + count);
  Number(row);
}

void PackageRows::Rename(Package& package, const std::string& name) {
  byName_.erase(package.Name());
  package.entry.name = name;
  byName_.emplace(name, &package);
}

void PackageRows::Number(int from) {
  for (int row = from; row < Count(); ++row) {
    At(row).row = row;
  }
}

}  // namespace updown
