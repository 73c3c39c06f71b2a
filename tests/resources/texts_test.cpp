#include "resources/texts.h"

#include <gtest/gtest.h>

namespace updown {
namespace {

// One text of each column, with the ends and line breaks that are easily lost.
TEST(Texts, FollowTheLanguage) {
  const std::tuple<std::int32_t, StringId, std::u16string_view> cases[] = {
      {1033, StringId::EmptyHint, u"Help and Tips:\r\nNo packages have been received yet."},
      {1033, StringId::Blank, u" "},
      {2052, StringId::TimeReceived, u"接收时间"},
      {1028, StringId::TimeReceived, u"接收時間"},
      {1036, StringId::Completed, u"Completed"},
      {-1, StringId::Cancel, u"Cancel"},
  };
  for (const auto& [language, id, text] : cases) {
    SetStringLanguage(language);
    EXPECT_EQ(LoadText(id), text) << language;
  }
  SetStringLanguage(kLanguages.front().id);
}

TEST(Texts, NumbersFindStringsAndNothingElse) {
  for (const std::uint32_t string : {128U, 57344U, 61204U, 61255U}) {
    EXPECT_FALSE(LoadText(string).empty()) << string;
  }
  // Gaps of the table, control and menu numbers, and numbers out of its range.
  for (const std::uint32_t other : {0U, 129U, 1033U, 8211U, 32782U, 61207U, 61256U, 100002U, ~0U}) {
    EXPECT_TRUE(LoadText(other).empty()) << other;
  }
}

}  // namespace
}  // namespace updown
