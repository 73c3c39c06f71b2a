#include "localdata/file_names.h"

#include <gtest/gtest.h>

namespace updown {
namespace {

TEST(FileNames, NamesThatCouldLeaveTheirFolderAreNotSafe) {
  for (const std::string& name :
       {std::string(), std::string("."), std::string(".."), std::string("a/b"),
        std::string("..\\b"), std::string("a\0b", 3), std::string(256, 'x')}) {
    EXPECT_FALSE(IsSafeName(name)) << name;
  }
  EXPECT_TRUE(IsSafeName("...") && IsSafeName("a b\xFF") && IsSafeName(std::string(255, 'x')));
}

TEST(FileNames, PassThroughTheirBuffersOrAreCutAtACharacter) {
  EXPECT_EQ(Utf8ToWideName("名\xFFz"), u"名\xFFFDz");
  EXPECT_EQ(Utf8ToWideName({"a\0z", 3}), u"a\xFFFDz");
  EXPECT_EQ(Utf8ToWideName(std::string(259, 'x')).size(), 259U);
  EXPECT_EQ(Utf8ToWideName(std::string(300, 'x')).size(), 259U);
  EXPECT_EQ(Utf8ToWideName(std::string(258, 'x') + "\U0001F600").size(), 258U);
  EXPECT_EQ(WideToUtf8Name(std::u16string(258, u'x') + u"é"), std::string(258, 'x'));
  EXPECT_TRUE(FitsPath(std::u16string(259, u'x')));
  EXPECT_FALSE(FitsPath(std::u16string(130, u'é')));
}

TEST(FileNames, OfferTheLastComponentAlone) {
  const std::pair<const char16_t*, const char16_t*> cases[] = {
      {u"a.txt", u"a.txt"}, {u"../../etc/passwd", u"passwd"},
      {u"..\\..\\x", u"x"}, {u"a/..", u""},
      {u".", u""},          {u"a/", u""},
      {u"...", u"..."}};
  for (const auto& [name, last] : cases) {
    EXPECT_EQ(LastComponent(name), last);
  }
}

}  // namespace
}  // namespace updown
