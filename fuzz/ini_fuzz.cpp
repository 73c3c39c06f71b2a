#include <cstdint>
#include <cstdlib>
#include <string>

#include "fuzz/memory_file.h"
#include "localdata/ini.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const updown::fuzz::MemoryFile input({data, size});
  updown::IniFile file(input.Path());
  const bool read = file.Read();
  if (file.GetValue("tallBIN", "txt_FROM") != file.GetValue("Tallbin", "TXT_From")) {
    std::abort();
  }
  if (read && size == 1 && data[0] != '=') {
    std::abort();  // no section fits into one byte, except the nameless one of "="
  }
  return 0;
}
