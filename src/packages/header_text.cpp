#include "packages/header_text.h"

#include <string_view>

#include "resources/texts.h"

namespace updown {
namespace {

constexpr std::size_t kMostShown = 1000;  // characters of one value
constexpr std::size_t kLongestLine = 8000;
constexpr std::u16string_view kLineEnd = u"\r\n";

std::u16string Label(StringId id) {
  const std::u16string_view text = LoadText(id);
  const Language& language = CurrentLanguage();
  std::u16string label = std::u16string(text) + std::u16string(LoadText(StringId::Colon));
  for (std::size_t length = text.size(); length < language.labelWidth; ++length) {
    label += language.labelFill;
  }
  return label;
}

std::u16string_view Shown(std::u16string_view value) { return value.substr(0, kMostShown); }

}  // namespace

std::u16string HeaderText(const PackageHeader& header) {
  std::u16string text = Label(StringId::From);
  text += Shown(header.from);
  text += u"\t\t";
  text += LoadText(StringId::TimeReceived);
  text += LoadText(StringId::Colon);
  text += u"\t";
  text += Shown(header.sendTime);
  text += kLineEnd;
  text += Label(StringId::To);
  text += Shown(header.to);
  text += kLineEnd;
  text += Label(StringId::Cc);
  text += Shown(header.cc);
  text += kLineEnd;
  text += Label(StringId::Subject);
  text += Shown(header.subject);
  return text;
}

std::u16string BreakLongLines(const std::u16string& text) {
  std::u16string broken;
  broken.reserve(text.size() + text.size() / kLongestLine * kLineEnd.size());
  std::size_t length = 0;
  for (const char16_t unit : text) {
    const bool trailSurrogate = unit >= 0xDC00 && unit < 0xE000;
    if (length >= kLongestLine && !trailSurrogate) {
      broken += kLineEnd;
      length = 0;
    }
    broken += unit;
    length = unit == u'\n' ? 0 : length + 1;
  }
  return broken;
}

}  // namespace updown
