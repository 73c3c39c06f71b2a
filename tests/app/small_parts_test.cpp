#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "app/task_list_path.h"
#include "tests/support/temporary_folder.h"

namespace updown {
namespace {

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
