#include <gtest/gtest.h>

#include "packages/file_type_names.h"

namespace updown {
namespace {

TEST(FileTypeNames, FollowTheExtensionFromTheFirstDot) {
  const std::pair<const char16_t*, const char16_t*> cases[] = {
      {u"report.pdf", u"PDF File"},
      {u"notes", u"NOTES File"},
      {u".txt", u".TXT File"},
      {u"my.report.pdf", u"REPORT.PDF File"},
      {u"a.", u" File"},
      {u"", u" File"},
      {u"note.é", u"É File"}};
  for (const auto& [name, type] : cases) {
    EXPECT_EQ(FileTypeName(name), type);
  }
}

}  // namespace
}  // namespace updown
