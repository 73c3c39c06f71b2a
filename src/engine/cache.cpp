#include "engine/cache.h"

#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

#include "localdata/file_names.h"
#include "localdata/files.h"
#include "platform/folders.h"

namespace updown {
namespace {

constexpr char kProgramFolder[] = "/oxapp";
constexpr char kCacheFolder[] = "/INICache";

}  // namespace

PackageCache PackageCache::InitPackageCache(const std::string& identityHash) {
  std::string folder;
  if (const auto applicationData = ApplicationDataFolder()) {
    folder = *applicationData + kProgramFolder;
    MakeFolder(folder);
  } else {
    folder = ExecutableFolder();
  }
  folder += kCacheFolder;
  MakeFolder(folder);
  folder += "/" + identityHash;
  MakeFolder(folder);
  return PackageCache(folder);
}

PackageCache::PackageCache(std::string packageCacheRoot)
    : packageCacheRoot_(std::move(packageCacheRoot)) {}

std::string PackageCache::PathOf(std::string_view name) const {
  return IsSafeName(name) ? packageCacheRoot_ + "/" + std::string(name) : std::string();
}

bool PackageCache::IsPackageIniCached(std::string_view name) const {
  const std::string path = PathOf(name);
  return !path.empty() && PathExists(path);
}

void PackageCache::Delete(std::string_view name) const {
  if (const std::string path = PathOf(name); !path.empty()) {
    DeleteLocalFile(path);
  }
}

void PackageCache::Rename(std::string_view name, std::string_view newName) const {
  const std::string from = PathOf(name);
  const std::string to = PathOf(newName);
  if (!from.empty() && !to.empty()) {
    std::rename(from.c_str(), to.c_str());
  }
}

std::unordered_set<std::string> PackageCache::Names() const {
  std::unordered_set<std::string> names;
  std::error_code error;
  for (std::filesystem::directory_iterator file(packageCacheRoot_, error), end;
       !error && file != end; file.increment(error)) {
    names.insert(file->path().filename().native());
  }
  return names;
}

}  // namespace updown
