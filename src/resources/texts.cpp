#include "resources/texts.h"

#include <algorithm>
#include <array>

namespace updown {
namespace {

struct TextRow {
  StringId id;
  std::array<std::u16string_view, kLanguages.size()> texts;
};

constexpr std::array kTexts = {
#define TEXT(id, name, ...) TextRow{StringId::name, {__VA_ARGS__}},
#include "resources/texts.inc"
#undef TEXT
};

constexpr bool AscendingWithoutDoubles() {
  for (std::size_t row = 1; row < kTexts.size(); ++row) {
    if (kTexts[row].id <= kTexts[row - 1].id) {
      return false;
    }
  }
  return true;
}

constexpr bool IsComplete(const std::array<std::u16string_view, kLanguages.size()>& texts) {
  for (const std::u16string_view text : texts) {
    if (text.empty()) {
      return false;
    }
  }
  return true;
}

static_assert(AscendingWithoutDoubles(), "texts.inc: an id is doubled or out of order");
#define TEXT(id, name, ...) \
  static_assert(IsComplete({__VA_ARGS__}), "texts.inc: " #name " lacks the text of a language");
#include "resources/texts.inc"
#undef TEXT

std::size_t column = 0;  // into kLanguages and TextRow::texts

}  // namespace

void SetStringLanguage(std::int32_t languageId) { column = LanguageColumn(languageId); }

const Language& CurrentLanguage() { return kLanguages.at(column); }

std::u16string_view LoadText(StringId id) {
  const auto* const row =
      std::lower_bound(kTexts.begin(), kTexts.end(), id,
                       [](const TextRow& text, StringId wanted) { return text.id < wanted; });
  return row != kTexts.end() && row->id == id ? row->texts.at(column) : std::u16string_view();
}

std::u16string_view LoadText(std::uint32_t number) {
  const auto id = static_cast<StringId>(number);
  const bool string =
      id == StringId::FrameTitle || (id >= StringId::ProgramTitle && id <= StringId::MoveFile);
  return string ? LoadText(id) : std::u16string_view();
}

}  // namespace updown
