#include "engine/package.h"

#include <gtest/gtest.h>

#include "engine/cache.h"
#include "platform/folders.h"
#include "tests/support/environment.h"
#include "tests/support/temporary_folder.h"

namespace updown {
namespace {

TEST(Package, Names) {
  for (const char* name : {"20080115093012", "20080115093012###"}) {
    EXPECT_TRUE(IsPackageName(name));
  }
  for (const char* name : {"", "##############", "2008011509301#", "120080115093012",
                           "x0080115093012", "20080115093012#x"}) {
    EXPECT_FALSE(IsPackageName(name));
  }
  EXPECT_EQ(ParseHeaderFile(HeaderFileOf("20080115093012#", true)).value().package,
            "20080115093012#");
  EXPECT_FALSE(ParseHeaderFile("20080115093012.INI"));
}

TEST(Package, TheCacheIsOneFolderForEachIdentity) {
  const test::TemporaryFolder data;
  const test::ScopedEnvironment environment({{"XDG_DATA_HOME", data.Path()}});
  const PackageCache cache = PackageCache::InitPackageCache("hash");
  EXPECT_EQ(cache.Root(), data.Path() + "/oxapp/INICache/hash");
  test::WriteFile(cache.PathOf("a.ini"), "a");
  test::WriteFile(cache.PathOf("b.ini"), "b");
  cache.Rename("a.ini", "c.ini");
  cache.Delete("b.ini");
  cache.Rename("c.ini", "../c.ini");
  EXPECT_EQ(cache.Names(), std::unordered_set<std::string>{"c.ini"});

  // A fetch starts on nothing; what a killed run has left goes at the next start.
  const std::string left = cache.BeginFetch("x.ini");
  test::WriteFile(left, "half");
  EXPECT_FALSE(PathExists(cache.BeginFetch("x.ini")));
  test::WriteFile(left, "half");
  PackageCache::InitPackageCache("hash");
  EXPECT_FALSE(PathExists(left));
  EXPECT_FALSE(cache.EndFetch(cache.PathOf("c.ini")));
  EXPECT_FALSE(cache.EndFetch(data.Path() + "/mine.part"));
}

TEST(Package, AHeaderIsInItsCodePage) {
  const test::TemporaryFolder folder;
  const std::string path = folder.File("p.ini");
  test::WriteFile(path,
                  "[TALLBIN]\r\nTXT_From=\xA4\xA4\xA4\xE5\r\nTXT_Notes=\xA4\xA4\xFF\xFF\xFF\xFF"
                  "next=[2]\xFF\xFF\r\n[Other]\r\nTXT_To=no\r\n");
  const PackageHeader header = ReadPackageHeader(path, AnsiCodePage::TraditionalChinese);
  EXPECT_EQ(header.from, u"\u4e2d\u6587");
  EXPECT_EQ(header.notes, u"\u4e2d\r\n\r\nnext=[2]\r\n");
  EXPECT_EQ(header.to, u"");
  EXPECT_EQ(ReadPackageHeader(folder.File("missing"), AnsiCodePage::Western).from, u"");
}

}  // namespace
}  // namespace updown
