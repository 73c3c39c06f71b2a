#include "engine/result_texts.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "resources/texts.h"
#include "service/result_codes.h"

namespace updown {
namespace {

TEST(ResultTexts, WordCodesOfEitherSignForBoxAndRow) {
  const std::u16string network = u"Network error. Please check your network connection.";
  const std::tuple<std::int64_t, std::u16string, std::u16string_view> cases[] = {
      {result::kConnection, network + u"[8194]", network},
      {-result::kConnection, network + u"[8194]", network},
      {result::kInterrupted, u"Lost connection with server.[8215]",
       u"Network session interrupted. Please try again."},
      {result::kNoSuchRemoteFile, u"Unknown error[8211]", u"The file is not on the service."},
      {61205, network + u"[61205]", network},
      {-4294967295, u"Unknown error[4294967295]", u"Unknown error."},
  };
  for (const auto& [code, box, row] : cases) {
    EXPECT_EQ(ResultBoxText(code), box);
    EXPECT_EQ(ResultRowText(code), row);
  }
}

TEST(ResultTexts, TheSystemsReasonSaysMoreInARow) {
  EXPECT_EQ(ResultRowText(result::kConnection, ECONNRESET), LoadText(StringId::ConnectionDropped));
  EXPECT_EQ(ResultRowText(result::kConnection, ETIMEDOUT), LoadText(StringId::ServiceSilent));
  EXPECT_EQ(ResultRowText(result::kFileOpen, ENOENT), LoadText(StringId::FolderMissing));
  EXPECT_EQ(ResultRowText(result::kFileWrite, ENOSPC), LoadText(StringId::DiskFull));
}

}  // namespace
}  // namespace updown
