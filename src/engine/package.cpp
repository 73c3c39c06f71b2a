#include "engine/package.h"

#include <algorithm>

#include "localdata/ini.h"

namespace updown {
namespace {

constexpr std::size_t kPackageDigits = 14;
constexpr std::string_view kHeaderSection = "Tallbin";

// A line break in the notes is the pair of bytes FF FF. What that pair becomes differs with the
// code page, so it is looked for behind the conversion.
std::u16string WithLineBreaks(const std::u16string& text, AnsiCodePage codePage) {
  const std::u16string pair = AnsiToWide("\xFF\xFF", codePage);
  if (pair.empty()) {
    return text;
  }
  std::u16string out;
  std::size_t from = 0;
  for (std::size_t at = text.find(pair); at != std::u16string::npos; at = text.find(pair, from)) {
    out.append(text, from, at - from).append(u"\r\n");
    from = at + pair.size();
  }
  return out.append(text, from);
}

}  // namespace

bool IsPackageName(std::string_view name) {
  while (name.ends_with('#')) {
    name.remove_suffix(1);
  }
  return name.size() == kPackageDigits && std::all_of(name.begin(), name.end(), [](char letter) {
           return letter >= '0' && letter <= '9';
         });
}

std::string HeaderFileOf(const std::string& package, bool start) {
  return package + (start ? "_Start.ini" : ".ini");
}

std::optional<HeaderFileName> ParseHeaderFile(std::string_view file) {
  for (const bool start : {true, false}) {
    const std::string ending = HeaderFileOf({}, start);
    if (file.ends_with(ending)) {
      file.remove_suffix(ending.size());
      return HeaderFileName{std::string(file), start};
    }
  }
  return std::nullopt;
}

PackageHeader ReadPackageHeader(const std::string& path, AnsiCodePage codePage) {
  if (path.empty()) {
    return {};
  }
  IniFile file(path);
  file.Read();
  const auto value = [&file, codePage](std::string_view key) {
    return AnsiToWide(file.GetValue(kHeaderSection, key), codePage);
  };
  return {.from = value("TXT_From"),
          .sendTime = value("Send_Time"),
          .to = value("TXT_To"),
          .cc = value("TXT_CC"),
          .subject = value("TXT_Subject"),
          .notes = WithLineBreaks(value("TXT_Notes"), codePage)};
}

}  // namespace updown
