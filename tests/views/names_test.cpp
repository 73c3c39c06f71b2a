#include <gmock/gmock.h>

#include "tests/views/views_world.h"
#include "views/attachment_record.h"
#include "views/file_type_names.h"
#include "views/package_list_model.h"
#include "views/package_names.h"
#include "views/service_names.h"

namespace updown::test {
namespace {

TEST(ServiceNames, PassThroughTheirBuffersOrAreCutAtACharacter) {
  EXPECT_EQ(Utf8ToWideName("名.txt"), u"名.txt");
  EXPECT_EQ(Utf8ToWideName("a\xFFz"), u"a\xFFFDz");
  EXPECT_EQ(Utf8ToWideName({"a\0z", 3}), u"a\xFFFDz");
  EXPECT_EQ(Utf8ToWideName(std::string(259, 'x')).size(), 259U);
  EXPECT_EQ(Utf8ToWideName(std::string(300, 'x')).size(), 259U);
  EXPECT_EQ(Utf8ToWideName(std::string(258, 'x') + "\U0001F600").size(), 258U);
  EXPECT_EQ(WideToUtf8Name(std::u16string(258, u'x') + u"é"), std::string(258, 'x'));
  EXPECT_TRUE(FitsPath(std::u16string(259, u'x')));
  EXPECT_FALSE(FitsPath(std::u16string(130, u'é')));
}

TEST(ServiceNames, OfferTheLastComponentAlone) {
  const std::pair<const char16_t*, const char16_t*> cases[] = {
      {u"a.txt", u"a.txt"}, {u"../../etc/passwd", u"passwd"},
      {u"..\\..\\x", u"x"}, {u"a/..", u""},
      {u".", u""},          {u"a/", u""},
      {u"...", u"..."}};
  for (const auto& [name, last] : cases) {
    EXPECT_EQ(LastComponent(name), last);
  }
}

TEST(PackageNames, OnlyFoldersOfFourteenDigitsArePackages) {
  const auto entries = MakeListing({{".", kEntryFolder},
                                    {"20081105093012", kEntryFolder},
                                    {"20081105093012##", kEntryFolder},
                                    {"20081105093013", kEntryFile},
                                    {"x20081105093012", kEntryFolder},
                                    {"2008110509301", kEntryFolder},
                                    {"200811050930121", kEntryFolder},
                                    {"2008110509301#", kEntryFolder},
                                    {"../20081105093012", kEntryFolder},
                                    {std::string("20081105093012\0", 15), kEntryFolder},
                                    {"20081105093012\xFF", kEntryFolder},
                                    {"20081105093012" + std::string(245, '#'), kEntryFolder},
                                    {"20081105093012" + std::string(244, '#'), kEntryFolder}});
  std::vector<std::size_t> lengths;
  for (const ListedPackage& package : PackagesIn(*entries)) {
    lengths.push_back(package.name.size());
  }
  EXPECT_THAT(lengths, testing::ElementsAre(14, 16, 258));
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
      {u"REPORT.PDF", u"PDF File"},
      {u"Setup.Exe", u"SETUP File"},
      {u"isuninst.exe", u"UNINSTALL File"},
      {u"setup2.exe", u"Application"},
      {u"a.h", u"Header File"},
      {u"a.Tiff", u"Picture File"},
      {u"a.lst", u"Windows File"},
      {u"a.chm", u"HTML Help"},
      {u"a.log", u"TEXT File"},
      {u"notes", u"NOTES File"},
      {u"pdf", u"PDF File"},
      {u".profile", u".PROFILE File"},
      {u".txt", u".TXT File"},
      {u"a.xyz", u"XYZ File"},
      {u"archive.tar.gz", u"TAR.GZ File"},
      {u"my.report.pdf", u"REPORT.PDF File"},
      {u"x.txt.bak", u"TXT.BAK File"},
      {u"a.", u" File"},
      {u"", u" File"},
      {u"note.é", u"É File"}};
  for (const auto& [name, type] : cases) {
    EXPECT_EQ(FileTypeName(name), type);
  }
}

TEST(AttachmentTexts, SizesChangeUnitAtEachPowerOf1024) {
  const std::pair<std::uint32_t, const char16_t*> cases[] = {{0, u""},
                                                             {1, u"1 B"},
                                                             {1023, u"1023 B"},
                                                             {1024, u"1 KB"},
                                                             {1536, u"1 KB"},
                                                             {1048575, u"1023 KB"},
                                                             {1048576, u"1.00 MB"},
                                                             {1572864, u"1.50 MB"},
                                                             {1073741823, u"1024.00 MB"},
                                                             {1073741824, u"1.000 GB"},
                                                             {4294967295, u"4.000 GB"}};
  for (const auto& [size, text] : cases) {
    EXPECT_EQ(SizeText(size), text);
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
    int column;
    int ascending;
    int descending;
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
  const auto add = [&model](const char16_t* from, LongParam item) {
    PackageRow row(DirectoryEntry(), item);
    row.cells[package_column::kFrom] = ToQString(from);
    model.AddOnTop(std::move(row));
  };
  const auto order = [&model] {
    std::string items;
    for (int row = 0; row < model.rowCount(); ++row) {
      items += std::to_string(model.Row(row).treeItem);
    }
    return items;
  };
  const char16_t* const texts[] = {u"b", u"", u"A", u"B", u"a"};
  for (LongParam item = 1; item <= 5; ++item) {
    add(texts[item - 1], item);
  }
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
