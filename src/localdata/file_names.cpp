#include "localdata/file_names.h"

#include <algorithm>
#include <climits>

#include "platform/text.h"

namespace updown {
namespace {

constexpr char16_t kReplacement = u'\xFFFD';

bool IsLeadSurrogate(char16_t unit) { return unit >= 0xD800 && unit < 0xDC00; }

}  // namespace

std::u16string Utf8ToWideName(std::string_view name) {
  std::u16string wide = Utf8ToWide(name);
  if (wide.size() >= kPathCapacity) {
    wide.resize(kPathCapacity - 1);
    if (IsLeadSurrogate(wide.back())) {
      wide.pop_back();
    }
  }
  std::replace(wide.begin(), wide.end(), u'\0', kReplacement);
  return wide;
}

std::string WideToUtf8Name(std::u16string_view name) { return WideToUtf8(name, kPathCapacity - 1); }

bool FitsPath(std::string_view path) { return path.size() < kPathCapacity; }

bool FitsPath(std::u16string_view path) { return FitsPath(WideToUtf8(path)); }

bool IsSafeName(std::string_view name) {
  return !name.empty() && name != "." && name != ".." && name.size() <= NAME_MAX &&
         name.find_first_of(std::string_view("/\\\0", 3)) == std::string_view::npos;
}

std::u16string_view LastComponent(std::u16string_view name) {
  const std::size_t separator = name.find_last_of(u"/\\");
  if (separator != std::u16string_view::npos) {
    name.remove_prefix(separator + 1);
  }
  return name == u"." || name == u".." ? std::u16string_view() : name;
}

}  // namespace updown
