#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

namespace updown {

// Bytes; what lies behind is not read. A header file has some dozen lines.
inline constexpr std::size_t kIniReadLimit = std::size_t{256} << 10;

// Reader of a package's header file. The first of the characters ; # [ = in a line decides what the
// line is; nothing is trimmed, and all comparison and storage is on bytes, without regard to case
// (ASCII) for names. A UTF-8 mark at the file's front is passed over; what the other bytes mean is
// the caller's business.
class IniFile {
 public:
  explicit IniFile(std::string path);

  // True if the file was read and holds at least one section. A line that begins with a control
  // character ends it with false; what was read before that stays. Call once.
  bool Read();

  // The last value of that name in the sections of that name, empty if there is none.
  std::string GetValue(std::string_view section, std::string_view key) const;

 private:
  using Section = std::unordered_map<std::string, std::string>;  // values by folded key
  bool TakeLine(std::string_view line, std::string& currentSection);

  std::string path_;
  std::unordered_map<std::string, Section> sections_;  // by folded name
};

}  // namespace updown
