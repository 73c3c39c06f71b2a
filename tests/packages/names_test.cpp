#include <gtest/gtest.h>

#include <cstdlib>

#include "engine/launch_state.h"
#include "packages/attachment_record.h"
#include "packages/file_type_names.h"
#include "resources/texts.h"

namespace updown {
namespace {

TEST(FileTypeNames, FollowTheExtensionFromTheFirstDot) {
  const std::pair<const char16_t*, const char16_t*> cases[] = {
      {u"report.pdf", u"PDF File"},
      {u"setup2.exe", u"Application"},
      {u"notes", u"NOTES File"},
      {u".txt", u".TXT File"},
      {u"my.report.pdf", u"REPORT.PDF File"},
      {u"a.", u" File"},
      {u"", u" File"},
      {u"note.é", u"É File"}};
  for (const auto& [name, type] : cases) {
    EXPECT_EQ(FileTypeName(name), type);
  }
}

TEST(AttachmentTexts, TipHasALineForEachColumnWithoutWidth) {
  setenv("TZ", "UTC", 1);
  tzset();
  SetStringLanguage(kDefaultLanguage);
  DirectoryEntry entry;
  entry.name = "a.zip";
  entry.type = kEntryFile;
  entry.modificationTime = 1200389400;
  EXPECT_EQ(AttachmentTip(entry),
            u"Name:a.zip\r\nSize:\r\nType:ZIP File\r\nCreated:2008-01-15 09:30");
  entry.type = kEntryFolder;
  EXPECT_EQ(AttachmentTip(entry), u"Name:a.zip\r\nType:File folder\r\nCreated:2008-01-15 09:30");
}

}  // namespace
}  // namespace updown
