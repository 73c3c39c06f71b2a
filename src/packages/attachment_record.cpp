#include "packages/attachment_record.h"

#include <array>
#include <ctime>
#include <string_view>
#include <tuple>

#include "localdata/file_names.h"
#include "packages/file_type_names.h"
#include "resources/texts.h"
#include "widgets/size_texts.h"

namespace updown {
namespace {

std::u16string Widen(std::string_view ascii) { return {ascii.begin(), ascii.end()}; }

}  // namespace

bool AttachmentRecord::operator==(const AttachmentRecord& other) const {
  const auto shown = [](const AttachmentRecord& record) {
    const DirectoryEntry& listed = record.entry;
    return std::tie(record.package, record.removing, listed.name, listed.type, listed.size,
                    listed.modificationTime);
  };
  return shown(*this) == shown(other);
}

std::u16string TimeText(std::uint32_t seconds) {
  const std::time_t time = seconds;
  std::tm local{};
  std::array<char, 50> text{};
  if (localtime_r(&time, &local) != nullptr) {
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M", &local);
  }
  return Widen(text.data());
}

std::u16string AttachmentText(const DirectoryEntry& entry, int column) {
  const bool file = entry.type == kEntryFile;
  switch (column) {
    case attachment_column::kName:
      return Utf8ToWideName(entry.name);
    case attachment_column::kSize:
      return file ? Widen(FormatSize(entry.size)) : std::u16string();
    case attachment_column::kType:
      return file ? FileTypeName(Utf8ToWideName(entry.name)) : u"File folder";
    case attachment_column::kTime:
      return TimeText(entry.modificationTime);
    default:
      return {};
  }
}

std::u16string AttachmentTip(const DirectoryEntry& entry) {
  std::u16string tip;
  const auto add = [&](StringId label, int column) {
    tip += LoadText(label);
    tip += u":";
    tip += AttachmentText(entry, column);
  };
  add(StringId::Name, attachment_column::kName);
  tip += u"\r\n";
  if (entry.type == kEntryFile) {
    add(StringId::Size, attachment_column::kSize);
    tip += u"\r\n";
  }
  add(StringId::Type, attachment_column::kType);
  tip += u"\r\n";
  add(StringId::Created, attachment_column::kTime);
  return tip;
}

}  // namespace updown
