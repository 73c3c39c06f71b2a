#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/text.h"

namespace updown {

// What the program knows of a language besides its texts.
struct Language {
  std::int32_t id;                // language identifier, as the launch variables give it
  AnsiCodePage codePage;          // of package headers, and of the command line
  std::u16string_view qtCatalog;  // Qt's own texts; empty where they need no translation
  std::size_t labelWidth;         // characters of a header's label before its value,
  std::u16string_view labelFill;  // and what stands for each that is missing
};

// In the order of the columns of texts.inc.
inline constexpr std::array kLanguages = {
    Language{1033, AnsiCodePage::Western, u"", 7, u" "},
    Language{2052, AnsiCodePage::SimplifiedChinese, u"qtbase_zh_CN", 5, u"  "},
    Language{1028, AnsiCodePage::TraditionalChinese, u"qtbase_zh_TW", 5, u"  "},
};

// The row in kLanguages of an identifier. The first language stands in for one without a row.
constexpr std::size_t LanguageColumn(std::int32_t id) {
  for (std::size_t column = 0; column < kLanguages.size(); ++column) {
    if (kLanguages[column].id == id) {
      return column;
    }
  }
  return 0;
}

constexpr const Language& LanguageOf(std::int32_t id) { return kLanguages[LanguageColumn(id)]; }

}  // namespace updown
