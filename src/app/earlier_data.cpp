#include "app/earlier_data.h"

#include <filesystem>
#include <system_error>

#include "app/task_list_path.h"
#include "engine/cache.h"
#include "platform/folders.h"

namespace updown {
namespace {

namespace fs = std::filesystem;

// An empty list, which every start leaves, holds nothing to take over.
bool HasTasks(const std::string& list) {
  std::error_code error;
  return fs::is_regular_file(list, error) && fs::file_size(list, error) > 0 && !error;
}

bool Move(const std::string& from, const std::string& to) {
  std::error_code error;
  fs::rename(from, to, error);
  return !error;
}

bool TakeOverList(const EarlierName& name, const std::string& target) {
  const auto list = TaskListPath(name.identityHash);
  return list && HasTasks(*list) && Move(*list, target);
}

bool TakeOverCache(const EarlierName& name, const std::string& target) {
  const std::string cache = PackageCache::RootOf(name.identityHash);
  return !name.lossy && PathExists(cache) && Move(cache, target);
}

}  // namespace

void TakeOverEarlierData(const std::string& identityHash, const std::vector<EarlierName>& earlier) {
  const auto list = TaskListPath(identityHash);
  const std::string cache = PackageCache::RootOf(identityHash);
  bool listStands = !list || PathExists(*list);
  bool cacheStands = PathExists(cache);
  for (const EarlierName& name : earlier) {
    listStands = listStands || TakeOverList(name, *list);
    cacheStands = cacheStands || TakeOverCache(name, cache);
  }
}

}  // namespace updown
