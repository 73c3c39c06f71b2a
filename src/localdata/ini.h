#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace updown {

// Bytes; what lies behind is not read. A header file has some dozen lines, so a longer file is no
// header.
inline constexpr std::size_t kIniReadLimit = std::size_t{8} << 20;

// Reader of a package's header file. The first of the characters ; # [ = in a line decides what the
// line is; nothing is trimmed, and all comparison and storage is on bytes, without regard to case
// (ASCII) for names. What the bytes mean is the caller's business.
class IniFile {
 public:
  explicit IniFile(std::string path);
  virtual ~IniFile() = default;

  // True if the file was read and holds at least one section. A line that begins with a byte that
  // is not printable ends it with false; what was read before that stays. Call once.
  bool Read();

  int FindSection(std::string_view name) const;            // index, or -1
  int FindValue(int section, std::string_view key) const;  // index, or -1
  int AddSection(std::string_view name);                   // also if there is one of that name
  bool SetValue(std::string_view section, std::string_view key, std::string_view value,
                bool create);
  std::string GetValue(std::string_view section, std::string_view key,
                       std::string_view fallback) const;

 private:
  using Index = std::unordered_map<std::string, int>;  // first place of each folded name
  struct Section {
    std::vector<std::string> keys;
    std::vector<std::string> values;
    Index keyIndex;
  };
  enum class LineOutcome { Continue, Refused };
  LineOutcome TakeLine(std::string_view line, std::string& currentSection);
  std::string Folded(std::string_view name) const;

  bool caseInsensitive_ = true;
  std::string path_;
  std::vector<Section> sections_;
  std::vector<std::string> sectionNames_;
  Index sectionIndex_;
};

}  // namespace updown
