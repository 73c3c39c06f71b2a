#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/text.h"

namespace updown {

// What makes a folder of the service a package, and what its header files say.

// Exactly 14 decimal digits, then any number of '#'.
bool IsPackageName(std::string_view name);

// The name of one of a package's two header files: package + "_Start.ini" or package + ".ini".
std::string HeaderFileOf(const std::string& package, bool start);

// What the name of a header file tells; nothing for another name. The package's own name may be
// any.
struct HeaderFileName {
  std::string package;
  bool start = false;
};
std::optional<HeaderFileName> ParseHeaderFile(std::string_view file);

// The values of a header file as wide text; missing ones are empty.
struct PackageHeader {
  std::u16string from;
  std::u16string sendTime;  // free text, shown as stored
  std::u16string to;
  std::u16string cc;
  std::u16string subject;
  std::u16string notes;  // line breaks as CR LF
};
PackageHeader ReadPackageHeader(const std::string& path, AnsiCodePage codePage);

}  // namespace updown
