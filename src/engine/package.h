#pragma once

#include <string>
#include <string_view>

#include "engine/cache.h"
#include "platform/text.h"
#include "resources/string_id.h"

namespace updown {

// What makes a folder of the service a package, and what its header files say.

// Exactly 14 decimal digits, then any number of '#'.
bool IsPackageName(std::u16string_view name);

std::u16string IniNameOf(std::u16string_view package);       // name + ".ini"
std::u16string StartIniNameOf(std::u16string_view package);  // name + "_Start.ini"

// Which header files the cache holds, and so which is read and what the package's status is.
struct PackageFiles {
  std::string readPath;                    // the file to read; empty if there is none
  StringId status = StringId::Incomplete;  // Completed if both are there
};
PackageFiles FindPackageFiles(const PackageCache& cache, std::u16string_view package);

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
