#include <cstdint>
#include <cstdlib>
#include <string>

#include "fuzz/memory_file.h"
#include "localdata/ini.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const updown::fuzz::MemoryFile input({data, size});
  updown::IniFile file(input.Path());
  const bool read = file.Read();
  const int section = file.FindSection("Tallbin");
  if (section >= 0 && file.FindValue(section, "TXT_From") < 0 &&
      file.GetValue("tallBIN", "txt_FROM", "none") != "none") {
    std::abort();  // the two ways to ask must agree
  }
  if (read && file.FindSection("") < 0 && size < 2) {
    std::abort();  // no section fits into one byte, except the nameless one of "="
  }
  return 0;
}
