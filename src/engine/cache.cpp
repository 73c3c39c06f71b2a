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
constexpr std::string_view kCacheFolder = "/INICache";
// No header's name ends so: they all end in ".ini".
constexpr std::string_view kUnfinished = ".part";

std::string ProgramFolder() {
  const auto applicationData = ApplicationDataFolder();
  return applicationData ? *applicationData + kProgramFolder : ExecutableFolder();
}

// What all caches of this user lie in, when `root` is one of them; else `root` itself.
std::string_view FolderOfCaches(std::string_view root) {
  const std::string_view parent = root.substr(0, root.rfind('/'));
  return parent.ends_with(kCacheFolder) ? parent : root;
}

}  // namespace

std::string PackageCache::RootOf(const std::string& identityHash) {
  return ProgramFolder().append(kCacheFolder) + "/" + identityHash;
}

PackageCache PackageCache::InitPackageCache(const std::string& identityHash) {
  std::string folder = ProgramFolder();
  MakeFolder(folder);
  folder += kCacheFolder;
  MakeFolder(folder);
  folder += "/" + identityHash;
  MakeFolder(folder);
  PackageCache cache(folder);
  cache.RemoveUnfinished();
  return cache;
}

PackageCache::PackageCache(std::string packageCacheRoot)
    : packageCacheRoot_(std::move(packageCacheRoot)) {}

std::string PackageCache::PathOf(std::string_view name) const {
  return IsSafeName(name) ? packageCacheRoot_ + "/" + std::string(name) : std::string();
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

std::string PackageCache::BeginFetch(std::string_view name) const {
  std::string path = PathOf(name);
  if (!path.empty()) {
    path += kUnfinished;
    DeleteLocalFile(path);
  }
  return path;
}

bool PackageCache::EndFetch(const std::string& fetchPath) const {
  if (!Holds(fetchPath) || !fetchPath.ends_with(kUnfinished)) {
    return false;
  }
  const std::string path = fetchPath.substr(0, fetchPath.size() - kUnfinished.size());
  return std::rename(fetchPath.c_str(), path.c_str()) == 0;
}

void PackageCache::RemoveUnfinished() const {
  std::error_code error;
  std::error_code ignored;
  for (std::filesystem::directory_iterator file(packageCacheRoot_, error), end;
       !error && file != end; file.increment(error)) {
    // An empty file is what an earlier version left when it was closed in mid-fetch.
    if (file->path().native().ends_with(kUnfinished) ||
        (file->is_regular_file(ignored) && file->file_size(ignored) == 0)) {
      DeleteLocalFile(file->path().native());
    }
  }
}

bool PackageCache::Holds(std::string_view path) const {
  const std::string_view caches = FolderOfCaches(packageCacheRoot_);
  return path.starts_with(caches) && path.substr(caches.size()).starts_with('/');
}

}  // namespace updown
