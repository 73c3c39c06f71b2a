#include "localdata/ini.h"

#include <algorithm>
#include <array>
#include <utility>

#include "localdata/files.h"
#include "platform/debug_stream.h"
#include "platform/local_file.h"
#include "platform/text.h"

namespace updown {
namespace {

constexpr std::size_t kChunk = 32768;

// Printable ASCII. Bytes of other letters are not printable at the front of a line, whatever the
// code page: a key is ASCII.
bool IsPrintable(char c) { return c >= ' ' && c <= '~'; }

// Calls `take` with each line, without its line feed, until it gives false or the file ends; a last
// line without a line feed counts. False if `take` ended it. Of a file that goes on beyond
// kIniReadLimit the lines that are whole by then are given.
template <typename Take>
bool ForEachLine(const UniqueFd& file, Take take) {
  std::array<std::uint8_t, kChunk> chunk;
  std::string rest;
  std::size_t total = 0;
  for (;;) {
    const int count = ReadLocalFile(file, chunk);
    if (count < 1) {
      return rest.empty() || take(rest);
    }
    std::string_view bytes(reinterpret_cast<const char*>(chunk.data()),
                           static_cast<std::size_t>(count));
    total += bytes.size();
    if (total > kIniReadLimit) {
      return true;
    }
    for (std::size_t end = bytes.find('\n'); end != std::string_view::npos;
         end = bytes.find('\n')) {
      rest.append(bytes.substr(0, end));
      bytes.remove_prefix(end + 1);
      if (!take(rest)) {
        return false;
      }
      rest.clear();
    }
    rest.append(bytes);
  }
}

}  // namespace

IniFile::IniFile(std::string path) : path_(std::move(path)) {}

std::string IniFile::Folded(std::string_view name) const {
  std::string folded(name);
  if (caseInsensitive_) {
    std::transform(folded.begin(), folded.end(), folded.begin(), AsciiLower);
  }
  return folded;
}

bool IniFile::Read() {
  const UniqueFd file = OpenFile(path_, FileAccess::Read, FileDisposition::OpenExisting);
  if (!file) {
    return false;
  }
  std::string currentSection;
  const bool whole = ForEachLine(file, [&](std::string_view line) {
    return TakeLine(line, currentSection) == LineOutcome::Continue;
  });
  return whole && !sections_.empty();
}

IniFile::LineOutcome IniFile::TakeLine(std::string_view line, std::string& currentSection) {
  if (!line.empty() && line.back() == '\r') {
    line.remove_suffix(1);
  }
  if (line.empty()) {
    return LineOutcome::Continue;
  }
  if (!IsPrintable(line.front())) {
    OutputLine("Failing on char %d\n", static_cast<int>(static_cast<signed char>(line.front())));
    return LineOutcome::Refused;
  }
  const std::size_t mark = line.find_first_of(";#[=");
  if (mark == std::string_view::npos) {
    return LineOutcome::Continue;
  }
  if (line[mark] == '=') {
    SetValue(currentSection, line.substr(0, mark), line.substr(mark + 1), true);
  } else if (line[mark] == '[') {
    const std::size_t end = line.rfind(']');
    if (end != std::string_view::npos && end > mark) {
      currentSection = line.substr(mark + 1, end - mark - 1);
      AddSection(currentSection);
    }
  }
  return LineOutcome::Continue;
}

int IniFile::FindSection(std::string_view name) const {
  const auto found = sectionIndex_.find(Folded(name));
  return found == sectionIndex_.end() ? -1 : found->second;
}

int IniFile::FindValue(int section, std::string_view key) const {
  if (section < 0 || static_cast<std::size_t>(section) >= sections_.size()) {
    return -1;
  }
  const Section& where = sections_[static_cast<std::size_t>(section)];
  const auto found = where.keyIndex.find(Folded(key));
  return found == where.keyIndex.end() ? -1 : found->second;
}

int IniFile::AddSection(std::string_view name) {
  const int index = static_cast<int>(sections_.size());
  sections_.emplace_back();
  sectionNames_.emplace_back(name);
  sectionIndex_.emplace(Folded(name), index);  // an earlier one of the name keeps its place
  return index;
}

bool IniFile::SetValue(std::string_view section, std::string_view key, std::string_view value,
                       bool create) {
  int sectionAt = FindSection(section);
  if (sectionAt < 0) {
    if (!create) {
      return false;
    }
    sectionAt = AddSection(section);
  }
  Section& where = sections_[static_cast<std::size_t>(sectionAt)];
  const int keyAt = FindValue(sectionAt, key);
  if (keyAt >= 0) {
    where.values[static_cast<std::size_t>(keyAt)] = value;
    return true;
  }
  if (!create) {
    return false;
  }
  where.keyIndex.emplace(Folded(key), static_cast<int>(where.keys.size()));
  where.keys.emplace_back(key);
  where.values.emplace_back(value);
  return true;
}

std::string IniFile::GetValue(std::string_view section, std::string_view key,
                              std::string_view fallback) const {
  const int sectionAt = FindSection(section);
  const int keyAt = FindValue(sectionAt, key);
  if (keyAt < 0) {
    return std::string(fallback);
  }
  return sections_[static_cast<std::size_t>(sectionAt)].values[static_cast<std::size_t>(keyAt)];
}

}  // namespace updown
