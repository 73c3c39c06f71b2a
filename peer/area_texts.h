#pragma once

#include <span>
#include <string_view>

namespace updown::peer {

// What people of one language write, in UTF-8. All of it is made up.
struct AreaTexts {
  const char* codePage;  // of the header files, as iconv calls it; it has every character used here
  std::span<const std::string_view> people;
  std::span<const std::string_view> subjects;
  std::span<const std::string_view> notes;      // "\n" where a line breaks
  std::span<const std::string_view> fileNames;  // at least twice as many as a package has files
};

// English for a language that is not known.
const AreaTexts& TextsOf(int languageId);

}  // namespace updown::peer
