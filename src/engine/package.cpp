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
  std::u16string out;
  std::size_t from = 0;
  for (std::size_t at = text.find(pair); at != std::u16string::npos; at = text.find(pair, from)) {
    out.append(text, from, at - from).append(u"\r\n");
    from = at + pair.size();
  }
  return out.append(text, from);
}

}  // namespace

bool IsPackageName(std::u16string_view name) {
  while (name.ends_with(u'#')) {
    name.remove_suffix(1);
  }
  return name.size() == kPackageDigits &&
         std::all_of(name.begin(), name.end(),
                     [](char16_t letter) { return letter >= u'0' && letter <= u'9'; });
}

std::u16string IniNameOf(std::u16string_view package) { return std::u16string(package) + u".ini"; }

std::u16string StartIniNameOf(std::u16string_view package) {
  return std::u16string(package) + u"_Start.ini";
}

PackageFiles FindPackageFiles(const PackageCache& cache, std::u16string_view package) {
  PackageFiles files;
  if (package.empty()) {
    return files;
  }
  const std::string start = WideToUtf8(StartIniNameOf(package));
  const std::string plain = WideToUtf8(IniNameOf(package));
  const bool hasPlain = cache.IsPackageIniCached(plain);
  if (cache.IsPackageIniCached(start)) {
    files.readPath = cache.PathOf(start);
    files.status = hasPlain ? StringId::Completed : StringId::Incomplete;
  } else if (hasPlain) {
    files.readPath = cache.PathOf(plain);
  }
  return files;
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
