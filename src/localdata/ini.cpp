#include "localdata/ini.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "localdata/files.h"
#include "platform/debug_stream.h"
#include "platform/text.h"

namespace updown {
namespace {

constexpr std::size_t kChunk = 32768;
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

// Control characters tell a binary file. From 0x80 on a byte may be part of any text.
bool IsControl(char c) { return (c >= '\0' && c < ' ') || c == '\x7F'; }

std::string Folded(std::string_view name) {
  std::string folded(name);
  std::transform(folded.begin(), folded.end(), folded.begin(), AsciiLower);
  return folded;
}

// The file's bytes; of a file that goes on beyond kIniReadLimit the lines that are whole by then.
std::string ReadWholeLines(const UniqueFd& file) {
  std::string bytes;
  std::array<std::uint8_t, kChunk> chunk;
  for (;;) {
    const int count = ReadLocalFile(file, chunk);
    if (count < 1) {
      return bytes;
    }
    bytes.append(reinterpret_cast<const char*>(chunk.data()), static_cast<std::size_t>(count));
    if (bytes.size() > kIniReadLimit) {
      bytes.resize(kIniReadLimit);
      bytes.resize(bytes.rfind('\n') + 1);  // none: npos + 1 is 0
      return bytes;
    }
  }
}

}  // namespace

IniFile::IniFile(std::string path) : path_(std::move(path)) {}

bool IniFile::Read() {
  const UniqueFd file = OpenFile(path_, FileAccess::Read, FileDisposition::OpenExisting);
  if (!file) {
    return false;
  }
  const std::string bytes = ReadWholeLines(file);
  std::string_view rest = bytes;
  if (rest.starts_with(kUtf8Mark)) {
    rest.remove_prefix(kUtf8Mark.size());
  }
  std::string currentSection;
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    if (!TakeLine(line, currentSection)) {
      return false;
    }
  }
  return !sections_.empty();
}

// False if the line ends the reading.
bool IniFile::TakeLine(std::string_view line, std::string& currentSection) {
  if (line.ends_with('\r')) {
    line.remove_suffix(1);
  }
  if (line.empty()) {
    return true;
  }
  if (IsControl(line.front())) {
    OutputLine("Failing on char %d\n", static_cast<int>(line.front()));
    return false;
  }
  const std::size_t mark = line.find_first_of(";#[=");
  if (mark == std::string_view::npos) {
    return true;
  }
  if (line[mark] == '=') {
    sections_[currentSection].insert_or_assign(Folded(line.substr(0, mark)),
                                               std::string(line.substr(mark + 1)));
  } else if (line[mark] == '[') {
    const std::size_t end = line.rfind(']');
    if (end != std::string_view::npos && end > mark) {
      currentSection = Folded(line.substr(mark + 1, end - mark - 1));
      sections_.try_emplace(currentSection);
    }
  }
  return true;
}

std::string IniFile::GetValue(std::string_view section, std::string_view key) const {
  const auto foundSection = sections_.find(Folded(section));
  if (foundSection == sections_.end()) {
    return {};
  }
  const auto foundValue = foundSection->second.find(Folded(key));
  return foundValue == foundSection->second.end() ? std::string() : foundValue->second;
}

}  // namespace updown
