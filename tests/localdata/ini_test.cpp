#include "localdata/ini.h"

#include <gtest/gtest.h>

#include "tests/support/temporary_folder.h"

namespace updown {
namespace {

struct Loaded {
  explicit Loaded(const std::string& content) : file(folder.File("a.ini")) {
    test::WriteFile(folder.File("a.ini"), content);
    read = file.Read();
  }
  test::TemporaryFolder folder;
  IniFile file;
  bool read = false;
};

TEST(IniFile, TheFirstMarkDecidesWhatALineIs) {
  const struct {
    std::string content;
    bool read;
    std::string section, key, value;
  } cases[] = {
      {"[s]\nKey=Value\n", true, "S", "kEY", "Value"},
      {"[s]\r\nk=v\r\n\r\n", true, "s", "k", "v"},
      {"[s]\nk=a\rb\n", true, "s", "k", "a\rb"},
      {"[s]\nk=last line", true, "s", "k", "last line"},
      {"[s]\na;b=c\n", true, "s", "a;b", ""},
      {"[s]\nkey[0]=1\nx=y\n", true, "0", "x", "y"},
      {"[s]\nx=a;b#c[d]=e\n", true, "s", "x", "a;b#c[d]=e"},
      {"[s]\na = b\n", true, "s", "a ", " b"},
      {"[a]b] tail\nk=v\n", true, "a]b", "k", "v"},
      {"[s]\n[open\n]x[\nk=v\n", true, "s", "k", "v"},
      {"k=v\n[s]\n", true, "", "k", "v"},
      {"[s]\n=v\n", true, "s", "", "v"},
      {"\xEF\xBB\xBF[s]\nk=v\n", true, "s", "k", "v"},
      {"[s]\nk=v\n\xB5\xDA\xB6\xFE\n\xFF=w\nl=x\n", true, "s", "l", "x"},
      {"[s]\n\xD6\xD0=v\n", true, "s", "\xD6\xD0", "v"},
      {"[s]\nk=1\nl=2\nK=3\n", true, "s", "k", "3"},
      {"[s]\nk=1\n[x]\n[S]\nk=2\nm=3\n", true, "s", "m", "3"},
      {"no mark at all\n; comment\n# comment\n\n", false, "", "", ""},
      {std::string("[s]\nk=a\0b\n", 10), true, "s", "k", std::string("a\0b", 3)},
  };
  for (const auto& [content, read, section, key, value] : cases) {
    const Loaded loaded(content);
    EXPECT_EQ(loaded.read, read) << content;
    EXPECT_EQ(loaded.file.GetValue(section, key), value) << content;
  }
}

TEST(IniFile, ALineOfBinaryEndsTheReading) {
  for (const char byte : {'\x01', '\t', '\x7F', '\0'}) {
    testing::internal::CaptureStdout();
    const Loaded loaded("[s]\nk=1\n" + std::string(1, byte) + "x\nk=2\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Failing on char " + std::to_string(static_cast<int>(byte)) + "\n");
    EXPECT_FALSE(loaded.read);
    EXPECT_EQ(loaded.file.GetValue("s", "k"), "1");
  }
}

TEST(IniFile, ReadsSoFarAndNoFurther) {
  const std::string value(kIniReadLimit - 100, 'x');
  const Loaded loaded("[s]\nlong=" + value + "\nlast=v\ncut=" + value + "\nbehind=v\n");
  EXPECT_TRUE(loaded.read);
  EXPECT_EQ(loaded.file.GetValue("s", "long"), value);
  EXPECT_EQ(loaded.file.GetValue("s", "last"), "v");
  EXPECT_EQ(loaded.file.GetValue("s", "cut") + loaded.file.GetValue("s", "behind"), "");
  EXPECT_FALSE(Loaded(value + value).read);
}

}  // namespace
}  // namespace updown
