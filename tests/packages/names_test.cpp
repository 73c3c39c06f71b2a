#include "packages/attachment_record.h"
#include "packages/file_type_names.h"
#include "packages/package_list_model.h"
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
  for (const ListedPackage& package : PackagesIn(*MakeListing(entries))) {
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
      {u"Setup.Exe", u"SETUP File"},
      {u"isuninst.exe", u"UNINSTALL File"},
      {u"setup2.exe", u"Application"},
      {u"a.Tiff", u"Picture File"},
      {u"a.log", u"TEXT File"},
      {u"a.chm", u"HTML Help"},
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
  EXPECT_EQ(AttachmentTip({entry, 0}),
            u"Name:a.zip\r\nSize:\r\nType:ZIP File\r\nCreated:2008-01-15 09:30");
  entry.type = kEntryFolder;
  EXPECT_EQ(AttachmentTip({entry, 0}),
            u"Name:a.zip\r\nType:File folder\r\nCreated:2008-01-15 09:30");
}

TEST(AttachmentOrder, ComparesKeysTimesTheDirection) {
  const auto record = [](const char* name, std::uint32_t size, std::uint16_t type) {
    DirectoryEntry entry;
    entry.name = name;
    entry.size = size;
    entry.modificationTime = size;
    entry.type = type;
    return AttachmentRecord(entry, 0);
  };
  const AttachmentRecord small = record("B", 1, kEntryFile);
  const AttachmentRecord large = record("a", 0xFFFFFFFF, kEntryFile);
  const AttachmentRecord empty = record("b", 0, kEntryFile);
  const AttachmentRecord folder = record("a", 1, kEntryFolder);
  struct Case {
    const AttachmentRecord& a;
    const AttachmentRecord& b;
    int column, ascending, descending;
  };
  const Case cases[] = {
      {large, small, 0, -1, 1},  {small, empty, 0, 0, 0},   {small, large, 1, -1, 1},
      {large, small, 1, 1, -1},  {small, small, 1, -1, -1}, {empty, small, 1, -1, -1},
      {small, empty, 1, 1, 1},   {small, large, 3, -1, 1},  {small, large, 2, -1, -1},
      {folder, small, 0, 1, -1}, {small, folder, 0, 1, -1}};
  for (const Case& c : cases) {
    EXPECT_EQ(CompareAttachments(c.a, c.b, c.column, 1), c.ascending) << c.column;
    EXPECT_EQ(CompareAttachments(c.a, c.b, c.column, -1), c.descending) << c.column;
  }
}

TEST(PackageOrder, ComparesTextsWithoutCaseAndKeepsTies) {
  PackageListModel model;
  LongParam item = 0;
  for (const QString& from : {u"b"_qs, u""_qs, u"A"_qs, u"B"_qs, u"a"_qs}) {
    PackageRow row(DirectoryEntry(), ++item);
    row.cells[package_column::kFrom] = from;
    model.AddOnTop(std::move(row));
  }
  const auto order = [&model] {
    std::string items;
    for (int row = 0; row < model.rowCount(); ++row) {
      items += std::to_string(model.Row(row).treeItem);
    }
    return items;
  };
  const QPersistentModelIndex kept = model.index(4, package_column::kFrom);
  EXPECT_EQ(order(), "54321");
  model.Sort(package_column::kFrom, true);
  EXPECT_EQ(order(), "25341");
  EXPECT_EQ(kept.row(), 4);
  model.Sort(package_column::kFrom, false);
  EXPECT_EQ(order(), "41532");
  EXPECT_EQ(kept.row(), 1);
}

}  // namespace
}  // namespace updown::test
