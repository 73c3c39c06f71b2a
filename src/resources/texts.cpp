#include "resources/texts.h"

#include <algorithm>

#include "resources/string_table.h"

namespace updown {
namespace {

std::size_t language = 0;  // index into StringRow::texts

const StringRow* FindRow(std::uint32_t id) {
  const auto table = StringTable();
  const auto row = std::lower_bound(table.begin(), table.end(), id,
                                    [](const StringRow& a, std::uint32_t b) { return a.id < b; });
  return row != table.end() && row->id == id ? &*row : nullptr;
}

}  // namespace

void SetStringLanguage(std::int32_t languageId) {
  switch (languageId) {
    case 2052:
      language = 1;
      break;
    case 1028:
      language = 2;
      break;
    default:
      language = 0;
  }
}

std::u16string_view LoadText(std::uint32_t id) {
  const StringRow* row = FindRow(id);
  return row != nullptr && row->byNumber ? row->texts.at(language) : std::u16string_view();
}

std::u16string_view LoadText(StringId id) {
  const StringRow* row = FindRow(static_cast<std::uint32_t>(id));
  return row != nullptr ? row->texts.at(language) : std::u16string_view();
}

std::u16string_view LoadText(StringId id, std::u16string_view fallback) {
  const auto text = LoadText(id);
  return text.empty() ? fallback : text;
}

}  // namespace updown
