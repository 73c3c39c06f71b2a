#include "resources/texts.h"

#include <gtest/gtest.h>

namespace updown {
namespace {

class StringsTest : public testing::Test {
 protected:
  ~StringsTest() override { SetStringLanguage(1033); }
};

TEST_F(StringsTest, TextsFollowTheLanguage) {
  struct Case {
    std::int32_t language;
    StringId id;
    std::u16string_view text;
  };
  const Case cases[] = {
      {1033, StringId::TimeReceived, u"Time Received"},
      {2052, StringId::TimeReceived, u"接收时间"},
      {1028, StringId::TimeReceived, u"接收時間"},
      {1028, StringId::Colon, u":"},
      {1033, StringId::ShortOfResources,
       u"Short of server resources. Please contact your network administrator. "},
      {2052, StringId::ShortOfResources, u"资源不足，请联系网络管理员。"},
      {1033, StringId::Blank, u" "},
      {1028, StringId::Blank, u" "},
      {1033, StringId::EmptyHint, u"Help and Tips:\r\nNo packages have been received yet."},
      {1028, StringId::DuplicateTask, u"抱歉，相同的任務已存在！"},
      {1028, StringId::MenuRedo, u"重做"},
      {1033, StringId::MenuMoveFile, u"Move File(&M)"},
      {1028, StringId::StatusTitle, u"下载状态显示"},
      {1036, StringId::Completed, u"Completed"},
      {0, StringId::Ok, u"OK"},
      {-1, StringId::Cancel, u"Cancel"},
  };
  for (const Case& c : cases) {
    SetStringLanguage(c.language);
    EXPECT_EQ(LoadText(c.id), c.text) << c.language << ' ' << static_cast<std::uint32_t>(c.id);
  }
}

TEST_F(StringsTest, NumbersFindStringsAndNothingElse) {
  for (const std::uint32_t string : {128U, 57344U, 61204U, 61255U}) {
    EXPECT_FALSE(LoadText(string).empty()) << string;
  }
  // Gaps of the table, control and menu numbers, and numbers out of its range.
  for (const std::uint32_t other : {0U, 129U, 1033U, 8211U, 32782U, 61207U, 61256U, 100002U, ~0U}) {
    EXPECT_TRUE(LoadText(other).empty()) << other;
  }
}

TEST_F(StringsTest, FallbackStandsInForAnEmptyTextOnly) {
  EXPECT_EQ(LoadText(StringId::Name, u"fallback"), u"Name");
  EXPECT_EQ(LoadText(StringId::Blank, u"fallback"), u" ");
  EXPECT_EQ(LoadText(static_cast<StringId>(61207), u"fallback"), u"fallback");
}

}  // namespace
}  // namespace updown
