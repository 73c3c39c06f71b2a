#include <cstdint>
#include <cstdlib>
#include <string>

#include "engine/package.h"
#include "fuzz/memory_file.h"
#include "localdata/ini.h"

namespace {

// A conversion gives whole characters, whatever the bytes.
void CheckText(const std::u16string& text) {
  if (updown::Utf8ToWide(updown::WideToUtf8(text)) != text) {
    std::abort();
  }
}

}  // namespace

// A package's header file. Its first byte chooses the code page.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace updown;
  if (size == 0) {
    return 0;
  }
  constexpr AnsiCodePage kPages[] = {AnsiCodePage::Western, AnsiCodePage::SimplifiedChinese,
                                     AnsiCodePage::TraditionalChinese};
  const fuzz::MemoryFile input({data + 1, size - 1});
  IniFile file(input.Path());
  const bool read = file.Read();
  const std::string from = file.GetValue("Tallbin", "TXT_From");
  if (file.GetValue("tallBIN", "txt_FROM") != from) {
    std::abort();
  }
  if (read && size == 2 && data[1] != '=') {
    std::abort();  // no section fits into one byte, except the nameless one of "="
  }
  const PackageHeader header = ReadPackageHeader(input.Path(), kPages[data[0] % 3]);
  for (const std::u16string* text :
       {&header.from, &header.sendTime, &header.to, &header.cc, &header.subject, &header.notes}) {
    CheckText(*text);
  }
  if (header.from.size() > 2 * from.size() || (from.empty() != header.from.empty())) {
    std::abort();
  }
  return 0;
}
