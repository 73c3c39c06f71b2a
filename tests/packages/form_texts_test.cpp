#include <gtest/gtest.h>

#include <string>

#include "packages/header_text.h"
#include "resources/texts.h"

namespace updown {
namespace {

TEST(HeaderText, FillsUpItsLabelsInEachLanguage) {
  const PackageHeader header{u"Ann", u"10:30", u"Bob", u"Cy", u"Hello", u""};
  const std::pair<std::int32_t, const char16_t*> cases[] = {
      {1033, u"From:   Ann\t\tTime Received:\t10:30\r\nTo:     Bob\r\nCc:     Cy\r\nSubject:Hello"},
      {2052,
       u"发件人:    Ann\t\t接收时间:\t10:30\r\n收件人:    Bob\r\n抄送:      Cy\r\n主题:      "
       u"Hello"},
      {1028,
       u"發件人:    Ann\t\t接收時間:\t10:30\r\n收件人:    Bob\r\n抄送:      Cy\r\n主題:      "
       u"Hello"}};
  for (const auto& [language, text] : cases) {
    SetStringLanguage(language);
    EXPECT_EQ(HeaderText(header), text);
  }
  SetStringLanguage(1033);
}

TEST(Notes, EndlessLinesAreBrokenBetweenCharacters) {
  const std::u16string shortLines =
      std::u16string(7000, u'a') + u"\r\n" + std::u16string(7000, u'b');
  EXPECT_EQ(BreakLongLines(shortLines), shortLines);
  std::u16string pairs;
  for (int i = 0; i < 8001; ++i) {
    pairs += u"\U0001F600";
  }
  const std::u16string odd = BreakLongLines(u"x" + pairs);
  EXPECT_EQ(odd.size(), 1 + pairs.size() + 4);
  EXPECT_EQ(odd.find(u"\r\n"), 8001U);  // behind the whole pair that crosses the limit
}

}  // namespace
}  // namespace updown
