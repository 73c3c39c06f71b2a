#include "packages/attachment_record.h"
#include "packages/file_type_names.h"
#include "packages/package_names.h"
#include "tests/packages/views_world.h"

namespace updown::test {
namespace {

TEST(PackageNames, OnlyFoldersOfFourteenDigitsArePackages) {
  std::vector<ListedEntry> entries = {{kSecond, kEntryFile}};
  for (const std::string& name :
       {std::string("."), kFirst, kFirst + "##", "x" + kFirst, kFirst.substr(1), kFirst + "1",
        kFirst.substr(1) + "#", "../" + kFirst, kFirst + '\0', kFirst + "\xFF",
        kFirst + std::string(245, '#'), kFirst + std::string(244, '#')}) {
    entries.push_back({name, kEntryFolder});
  }
  std::vector<std::size_t> lengths;
  for (const ListedPackage& package : PackagesIn(MakeListing(entries))) {
    lengths.push_back(package.name.size());
  }
  EXPECT_THAT(lengths, ElementsAre(14, 16, 258));
}

TEST(PackageNames, HeaderFilesOfAnyKnownPackageAreNoAttachments) {
  PackageNames known;
  known.Append(u"20081105093012");
  EXPECT_TRUE(known.IsPackageIniName(u"20081105093012.ini"));
  EXPECT_TRUE(known.IsPackageIniName(u"20081105093012_Start.ini"));
  for (const char16_t* file : {u"20081105093012.INI", u"20081105093012_start.ini", u".ini",
                               u"20081105093013.ini", u"20081105093012#.ini", u"setup.ini"}) {
    EXPECT_FALSE(known.IsPackageIniName(file));
  }
}

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
  EXPECT_EQ(AttachmentTip(AttachmentRecord(entry)),
            u"Name:a.zip\r\nSize:\r\nType:ZIP File\r\nCreated:2008-01-15 09:30");
  entry.type = kEntryFolder;
  EXPECT_EQ(AttachmentTip(AttachmentRecord(entry)),
            u"Name:a.zip\r\nType:File folder\r\nCreated:2008-01-15 09:30");
}

}  // namespace
}  // namespace updown::test
