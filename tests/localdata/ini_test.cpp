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
      {"[s]\na;b=c\n", true, "s", "a;b", "none"},
      {"[s]\na#b=c\n", true, "s", "a#b", "none"},
      {"[s]\nkey[0]=1\nx=y\n", true, "0", "x", "y"},
      {"[s]\nx=a;b#c[d]=e\n", true, "s", "x", "a;b#c[d]=e"},
      {"[s]\na = b\n", true, "s", "a ", " b"},
      {"[a]b] tail\nk=v\n", true, "a]b", "k", "v"},
      {"[s]\n[open\n]x[\nk=v\n", true, "s", "k", "v"},
      {"k=v\n[s]\n", true, "", "k", "v"},
      {"[s]\n=v\n", true, "s", "", "v"},
      {"[s]\nk=1\nl=2\nK=3\n", true, "s", "k", "3"},
      {"[s]\nk=1\n[x]\n[S]\nk=2\nm=3\n", true, "s", "m", "3"},
      {"no mark at all\n; comment\n# comment\n\n", false, "", "", "none"},
      {"", false, "", "", "none"},
      {std::string("[s]\nk=a\0b\n", 10), true, "s", "k", std::string("a\0b", 3)},
  };
  for (const auto& [content, read, section, key, value] : cases) {
    const Loaded loaded(content);
    EXPECT_EQ(loaded.read, read) << content;
    EXPECT_EQ(loaded.file.GetValue(section, key, "none"), value) << content;
  }
}

TEST(IniFile, ASecondSectionOfANameStaysEmpty) {
  const Loaded loaded("[x]\n[y]\n[X]\nk=v\n");
  EXPECT_EQ(loaded.file.FindSection("X"), 0);
  EXPECT_EQ(loaded.file.FindValue(0, "k"), 0);
  EXPECT_EQ(loaded.file.FindValue(2, "k"), -1);
  EXPECT_EQ(loaded.file.FindValue(-1, "k"), -1);
}

TEST(IniFile, ALineOfBinaryEndsTheReading) {
  const struct {
    char byte;
    int number;
  } cases[] = {{'\x01', 1}, {'\t', 9}, {'\x7F', 127}, {'\xEF', -17}, {'\0', 0}};
  for (const auto& [byte, number] : cases) {
    testing::internal::CaptureStdout();
    const Loaded loaded("[s]\nk=1\n" + std::string(1, byte) + "x\nk=2\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Failing on char " + std::to_string(number) + "\n");
    EXPECT_FALSE(loaded.read);
    EXPECT_EQ(loaded.file.GetValue("s", "k", ""), "1");
  }
}

TEST(IniFile, LinesOfAMegabyteAndFilesWithoutAnEndAreBounded) {
  const std::string longValue(std::size_t{1} << 20, 'x');
  std::string content = "[s]\nlong=" + longValue + "\n";
  int keys = 0;
  while (content.size() < kIniReadLimit) {
    content += "key" + std::to_string(keys++) + "=v\n";
  }
  content += std::string(kIniReadLimit, 'y') + "\nbehind=v\n";
  const Loaded loaded(content);
  EXPECT_TRUE(loaded.read);
  EXPECT_EQ(loaded.file.GetValue("s", "long", ""), longValue);
  EXPECT_EQ(loaded.file.GetValue("s", "key" + std::to_string(keys / 2), ""), "v");
  EXPECT_EQ(loaded.file.GetValue("s", "behind", "none"), "none");
}

}  // namespace
}  // namespace updown
