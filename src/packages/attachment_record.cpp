#include "packages/attachment_record.h"

#include <algorithm>
#include <array>
#include <ctime>

#include "localdata/file_names.h"
#include "packages/file_type_names.h"
#include "resources/texts.h"
#include "widgets/size_texts.h"

namespace updown {
namespace {

std::u16string Widen(std::string_view ascii) { return {ascii.begin(), ascii.end()}; }

char UpperAscii(char byte) {
  return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
}

std::string UpperBytes(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), UpperAscii);
  return text;
}

int CompareNames(const std::string& a, const std::string& b) {
  const int order = UpperBytes(a).compare(UpperBytes(b));
  return static_cast<int>(order > 0) - static_cast<int>(order < 0);
}

// Unsigned, so that -1 turns every order around but that of 0.
int CompareKeys(std::uint32_t a, std::uint32_t b, int direction) {
  const auto factor = static_cast<std::uint32_t>(direction);
  return b * factor < a * factor ? 1 : -1;
}

}  // namespace

AttachmentRecord::AttachmentRecord(const DirectoryEntry& entry)
    : name(entry.name),
      modificationTime(entry.modificationTime),
      size(entry.size),
      type(entry.type) {}

std::u16string TimeText(std::uint32_t seconds) {
  const std::time_t time = seconds;
  std::tm local{};
  std::array<char, 50> text{};
  if (localtime_r(&time, &local) != nullptr) {
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M", &local);
  }
  return Widen(text.data());
}

std::u16string AttachmentText(const AttachmentRecord& record, int column) {
  const bool file = record.type == kEntryFile;
  switch (column) {
    case attachment_column::kName:
      return Utf8ToWideName(record.name);
    case attachment_column::kSize:
      return file ? Widen(FormatSize(record.size)) : std::u16string();
    case attachment_column::kType:
      return file ? FileTypeName(Utf8ToWideName(record.name)) : u"File folder";
    case attachment_column::kTime:
      return TimeText(record.modificationTime);
    default:
      return {};
  }
}

std::u16string AttachmentTip(const AttachmentRecord& record) {
  std::u16string tip;
  const auto add = [&](StringId label, int column) {
    tip += LoadText(label);
    tip += u":";
    tip += AttachmentText(record, column);
  };
  add(StringId::Name, attachment_column::kName);
  tip += u"\r\n";
  if (record.type == kEntryFile) {
    add(StringId::Size, attachment_column::kSize);
    tip += u"\r\n";
  }
  add(StringId::Type, attachment_column::kType);
  tip += u"\r\n";
  add(StringId::Created, attachment_column::kTime);
  return tip;
}

int CompareAttachments(const AttachmentRecord& a, const AttachmentRecord& b, int column,
                       int direction) {
  if (a.type != b.type) {
    return direction;
  }
  switch (column) {
    case attachment_column::kName:
      return CompareNames(a.name, b.name) * direction;
    case attachment_column::kSize:
      return CompareKeys(a.size, b.size, direction);
    case attachment_column::kType:
      return a.type * direction > b.type * direction ? 1 : -1;
    case attachment_column::kTime:
      return CompareKeys(a.modificationTime, b.modificationTime, direction);
    default:
      return 0;
  }
}

}  // namespace updown
