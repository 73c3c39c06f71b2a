#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "app/offered_name.h"
#include "app/report_result.h"
#include "app/task_list_path.h"
#include "resources/strings.h"
#include "service/result_codes.h"
#include "tests/support/temporary_folder.h"

namespace updown {
namespace {

TEST(ReportResultTest, WordsCodes) {
  const std::u16string network = u"Network error. Please check your network connection.";
  const std::tuple<std::int32_t, std::int64_t, std::u16string> cases[] = {
      {1033, -8199, u"Authorization failure. Server access denied.[8199]"},
      {1033, 8199, u"Authorization failure. Server access denied.[8199]"},
      {1033, result::kConnection, network + u"[8194]"},
      {1033, 61205, network + u"[61205]"},
      {1033, 61214, u"Failed to read folder information.[61214]"},
      {1033, 8211, u"Unknown error[8211]"},
      {1033, result::kInterrupted, u"Lost connection with server.[8215]"},
      {1033, -4294967295, u"Unknown error[4294967295]"},
      {2052, 8200, u"系统正忙，请稍后再试。[8200]"},
  };
  for (const auto& [language, code, text] : cases) {
    SetStringLanguage(language);
    EXPECT_EQ(ReportText(code), text);
  }
  SetStringLanguage(1033);
}

TEST(OfferedNameTest, OffersTheLastComponentOnly) {
  const std::pair<const char*, const char*> cases[] = {{"report.pdf", "report.pdf"},
                                                       {"../../passwd", "passwd"},
                                                       {"..\\x.doc", "x.doc"},
                                                       {"a/..", ""}};
  for (const auto& [name, offered] : cases) {
    EXPECT_EQ(OfferedName(name), offered);
  }
}

TEST(TaskListPathTest, LiesInTheApplicationDataFolder) {
  const test::TemporaryFolder folder;
  setenv("XDG_DATA_HOME", folder.File("data").c_str(), 1);
  EXPECT_EQ(TaskListPath("0123"), folder.File("data/oxapp/0123.lst"));
  EXPECT_TRUE(std::filesystem::is_directory(folder.File("data/oxapp")));
  // With a file where the folder should be.
  test::WriteFile(folder.File("blocked"), "");
  setenv("XDG_DATA_HOME", folder.File("blocked").c_str(), 1);
  EXPECT_EQ(TaskListPath("0123"), std::nullopt);
}

}  // namespace
}  // namespace updown
