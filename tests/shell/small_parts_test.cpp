#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <fstream>

#include "resources/strings.h"
#include "service/result_codes.h"
#include "shell/offered_name.h"
#include "shell/pane_layout.h"
#include "shell/report_result.h"
#include "shell/save_throttle.h"
#include "shell/task_list_path.h"
#include "tests/support/temporary_folder.h"

namespace updown {
namespace {

TEST(ReportResultTest, WordsCodes) {
  SetStringLanguage(1033);
  const std::u16string network = u"Network error. Please check your network connection.";
  EXPECT_EQ(ReportText(-8199), u"Authorization failure. Server access denied.[8199]");
  EXPECT_EQ(ReportText(8199), u"Authorization failure. Server access denied.[8199]");
  EXPECT_EQ(ReportText(result::kConnection), network + u"[8194]");
  EXPECT_EQ(ReportText(61205), network + u"[61205]");
  EXPECT_EQ(ReportText(61214), u"Failed to read folder information.[61214]");
  EXPECT_EQ(ReportText(8211), u"Unknown error[8211]");
  EXPECT_EQ(ReportText(result::kInterrupted), u"Lost connection with server.[8215]");
  EXPECT_EQ(ReportText(-4294967295), u"Unknown error[4294967295]");
  SetStringLanguage(2052);
  EXPECT_EQ(ReportText(8200), u"系统正忙，请稍后再试。[8200]");
  SetStringLanguage(1033);
}

TEST(PaneLayoutTest, DividesByTwentyFirsts) {
  EXPECT_EQ(PaneHeightsOf(210).list, 80);
  EXPECT_EQ(PaneHeightsOf(210).form, 130);
  EXPECT_EQ(PaneHeightsOf(20).list, 7);
  EXPECT_EQ(PaneHeightsOf(20).form, 12);
}

TEST(SaveThrottleTest, KeepsTheLastRequestOfABurst) {
  SaveThrottle throttle;
  EXPECT_TRUE(throttle.Request());
  EXPECT_FALSE(throttle.Request());
  EXPECT_FALSE(throttle.Request());
  EXPECT_TRUE(throttle.PauseOver()) << "what came in the pause is saved at its end";
  EXPECT_FALSE(throttle.Request());
  EXPECT_TRUE(throttle.PauseOver());
  EXPECT_FALSE(throttle.PauseOver());
  EXPECT_TRUE(throttle.Request());
}

TEST(OfferedNameTest, OffersTheLastComponentOnly) {
  EXPECT_EQ(OfferedName("report.pdf"), "report.pdf");
  EXPECT_EQ(OfferedName("../../etc/passwd"), "passwd");
  EXPECT_EQ(OfferedName("..\\x.doc"), "x.doc");
  EXPECT_EQ(OfferedName("a/.."), "");
  EXPECT_EQ(OfferedName("a/"), "");
}

TEST(TaskListPathTest, LiesInTheApplicationDataFolder) {
  const test::TemporaryFolder folder;
  const std::string data = folder.Path() + "/data";
  setenv("XDG_DATA_HOME", data.c_str(), 1);
  EXPECT_EQ(TaskListPath("0123"), data + "/oxapp/0123.lst");
  struct stat status {};
  EXPECT_EQ(stat((data + "/oxapp").c_str(), &status), 0);

  const std::string blocked = folder.Path() + "/blocked";
  std::ofstream(blocked) << "a file where the folder should be";
  setenv("XDG_DATA_HOME", blocked.c_str(), 1);
  EXPECT_EQ(TaskListPath("0123"), std::nullopt);
}

}  // namespace
}  // namespace updown
