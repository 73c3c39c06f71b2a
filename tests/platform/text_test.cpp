#include "platform/text.h"

#include <gtest/gtest.h>

#include "platform/environment.h"

namespace updown {
namespace {

TEST(Text, BadUtf8IsReplacedAndNothingAroundItIsLost) {
  EXPECT_EQ(Utf8ToWide("a\xC3\xA4\xF0\x9F\x98\x80"), u"a\u00E4\U0001F600");
  EXPECT_EQ(Utf8ToWide("a\xFF/\xC3"), u"a\uFFFD/\uFFFD");
  EXPECT_EQ(Utf8ToWide(std::string_view("a\0b", 3)), std::u16string_view(u"a\0b", 3));
  EXPECT_EQ(Utf8ToWide({}), u"");
  const char16_t loneSurrogate[] = {u'x', 0xD83D, u'y'};
  EXPECT_EQ(WideToUtf8({loneSurrogate, 3}), "x\xEF\xBF\xBDy");
  EXPECT_EQ(WideToUtf8(u"\u4E2D\U0001F600"), "\xE4\xB8\xAD\xF0\x9F\x98\x80");
}

// The mark for a line break in a package's notes is FF FF, in whatever code page they are.
TEST(Text, CodePagesConvertBothWaysAndKeepTheLineBreakMark) {
  const struct {
    AnsiCodePage page;
    std::string bytes;
    std::u16string wide;
    std::u16string mark;
  } cases[] = {
      {AnsiCodePage::Western, "\x80 \xE4", u"\u20AC \u00E4", u"\u00FF\u00FF"},
      {AnsiCodePage::SimplifiedChinese, "\xD6\xD0x", u"\u4E2Dx", u"\uF8F5\uF8F5"},
      {AnsiCodePage::TraditionalChinese, "\xA4\xA4x", u"\u4E2Dx", u"\uF8F8\uF8F8"},
  };
  for (const auto& [page, bytes, wide, mark] : cases) {
    EXPECT_EQ(AnsiToWide(bytes + "\xFF\xFF!", page), wide + mark + u"!") << bytes;
    EXPECT_EQ(WideToAnsi(wide, page), bytes) << bytes;
    EXPECT_EQ(WideToAnsi(u"a\U0001F600\u200Db", page), "a??b");
    if (page != AnsiCodePage::Western) {
      EXPECT_EQ(AnsiToWide("\x81\xFF\xFF", page), u"\uFFFD" + mark) << bytes;
      EXPECT_EQ(AnsiToWide("a\x81", page), u"a\uFFFD") << bytes;
    }
  }
}

TEST(Text, CaseIsIgnoredCharacterByCharacter) {
  EXPECT_TRUE(EqualIgnoringCase(u"/PKG/\u00C4\U00010400", u"/pkg/\u00E4\U00010428"));
  EXPECT_FALSE(EqualIgnoringCase(u"a", u"ab"));
  EXPECT_LT(CompareIgnoringCase(u"a", u"AB"), 0);
  EXPECT_GT(CompareIgnoringCase(u"b", u"AB"), 0);
  EXPECT_EQ(ToUpper(u"x\u00E4\U00010428"), u"X\u00C4\U00010400");
}

TEST(Environment, NumbersAreReadAsFarAsTheyGo) {
  const struct {
    const char* text;
    std::int32_t number;
  } cases[] = {{"2052x", 2052}, {"abc", 0}, {"", 0},           {" \t12", 12}, {"-7", -7},
               {"+7", 7},       {"- 7", 0}, {"4294967297", 1}, {"0x10", 0}};
  for (const auto& [text, number] : cases) {
    EXPECT_EQ(LeadingNumber(text), number) << text;
  }
}

}  // namespace
}  // namespace updown
