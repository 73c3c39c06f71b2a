#include <gtest/gtest.h>

#include <string>

#include "packages/form_layout.h"
#include "packages/header_text.h"
#include "resources/texts.h"

namespace updown {
namespace {

std::string Edges(const Box& box) {
  return std::to_string(box.left) + "," + std::to_string(box.top) + "," +
         std::to_string(box.right) + "," + std::to_string(box.bottom);
}

TEST(FormLayout, PlacesTheControlsByTheirArithmetic) {
  struct Case {
    int width, height, lineHeight;
    const char* header;
    const char* complete;  // group and box of the notes, group and box of the attachments
    const char* partial;   // group and box of the notes
  };
  const Case cases[] = {
      // margin 10, gap 10, caption 26, lower edge of the header 84
      {1000, 700, 16, "20,10,980,84", "10,84,990,382 20,110,980,366 10,392,990,690 20,418,980,674",
       "10,84,990,690 20,110,980,674"},
      // margin below 5: the inner edges keep 5 of their own, the groups do not
      {299, 301, 12, "7,2,292,55", "2,55,297,174 7,72,292,162 2,179,297,299 7,196,292,287",
       "2,55,297,299 7,72,292,287"},
      // too small for anything: the caption keeps 13, edges cross
      {50, 40, 7, "5,0,45,33", "0,33,50,34 5,46,45,27 0,39,50,40 5,52,45,33",
       "0,33,50,40 5,46,45,33"}};
  for (const Case& c : cases) {
    const FormLayout whole = LayOutForm(c.width, c.height, c.lineHeight, true);
    const FormLayout part = LayOutForm(c.width, c.height, c.lineHeight, false);
    EXPECT_EQ(Edges(whole.header), c.header);
    EXPECT_EQ(Edges(part.header), c.header);
    EXPECT_EQ(Edges(whole.noteGroup) + " " + Edges(whole.notes) + " " +
                  Edges(whole.attachmentGroup) + " " + Edges(whole.attachments),
              c.complete);
    EXPECT_EQ(Edges(part.noteGroup) + " " + Edges(part.notes), c.partial);
  }
}

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
