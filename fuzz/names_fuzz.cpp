#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "engine/cache.h"
#include "engine/package.h"
#include "localdata/file_names.h"
#include "localdata/files.h"
#include "localdata/transfer_record.h"
#include "platform/text.h"

// A name that the service sent, on its way to a local path: whatever is let through names one thing
// right inside the folder that it is meant for.

namespace {

using namespace updown;
namespace fs = std::filesystem;

constexpr char kRoot[] = "/base/of/all";

void Must(bool holds) {
  if (!holds) {
    std::abort();
  }
}

void MustLieInRoot(const std::string& path) {
  Must(path.find('\0') == std::string::npos);
  const fs::path normal = fs::path(path).lexically_normal();
  Must(normal.parent_path() == kRoot && !normal.filename().empty() && normal.filename() != "..");
}

void CheckServiceName(const std::string& name) {
  if (IsSafeName(name)) {
    MustLieInRoot(std::string(kRoot) + "/" + name);
    Must(name.size() <= 255);
  }
  const PackageCache cache(kRoot);
  const std::string cached = cache.PathOf(name);
  if (cached.empty()) {
    Must(!IsSafeName(name));
  } else {
    MustLieInRoot(cached);
  }
  if (IsPackageName(name)) {
    Must(IsSafeName(name) || name.size() > 255);
    const auto parsed = ParseHeaderFile(HeaderFileOf(name, true));
    Must(parsed && parsed->package == name && parsed->start);
  }
}

// What a Save suggests or takes of a name that was shown.
void CheckShownName(const std::string& name) {
  const std::u16string wide = Utf8ToWideName(name);
  Must(wide.size() < kPathCapacity && wide.find(u'\0') == std::u16string::npos);
  const std::string last = WideToUtf8Name(LastComponent(wide));
  Must(last.size() < kPathCapacity && WideToUtf8(Utf8ToWide(last)) == last);
  if (!last.empty()) {
    MustLieInRoot(std::string(kRoot) + "/" + last);
  }
}

void CheckPaths(const std::string& text) {
  const std::size_t half = text.size() / 2;
  TransferRecord record;
  record.SetPaths({text, kRoot});
  const bool moved = record.MoveRemotePath(text.substr(0, half), "/new");
  Must(record.LocalPath() == kRoot);
  Must(moved ? FitsPath(record.RemotePath()) : record.RemotePath() == text);
  const fs::path named = NamedPath(text);
  Must(named.empty() ||
       (named.has_filename() && named.filename() != "." && named.filename() != ".."));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string name(reinterpret_cast<const char*>(data), size);
  CheckServiceName(name);
  CheckShownName(name);
  CheckPaths(name);
  return 0;
}
