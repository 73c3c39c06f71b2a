#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/folders.h"
#include "platform/local_file.h"
#include "tests/support/environment.h"
#include "tests/support/temporary_folder.h"

namespace updown {
namespace {

using test::TemporaryFolder;

TEST(OpenFile, RefusesWhatIsNoFileWithoutWaiting) {
  const TemporaryFolder folder;
  const std::string pipe = folder.File("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_FALSE(OpenFile(pipe, FileAccess::Read, FileDisposition::OpenAlways));
  EXPECT_EQ(errno, EINVAL);
  EXPECT_FALSE(OpenFile(folder.Path(), FileAccess::Read, FileDisposition::OpenAlways));
  EXPECT_EQ(errno, EISDIR);
  EXPECT_FALSE(OpenFile(folder.File(std::string("a\0b", 3)), FileAccess::ReadWrite,
                        FileDisposition::OpenAlways));
  EXPECT_FALSE(PathExists(folder.File("a")));
}

TEST(Folders, ApplicationDataFollowsTheEnvironmentAndMakesWhatIsMissing) {
  const TemporaryFolder folder;
  const auto dataFolder = [&folder](const std::string& variable) {
    const test::ScopedEnvironment environment(
        {{"HOME", folder.File("home")}, {"XDG_DATA_HOME", variable}});
    return ApplicationDataFolder();
  };
  EXPECT_EQ(dataFolder(folder.File("a/b//")), folder.File("a/b"));
  EXPECT_TRUE(PathExists(folder.File("a/b")));
  EXPECT_EQ(dataFolder("relative"), folder.File("home/.local/share"));
  test::WriteFile(folder.File("file"), "");
  EXPECT_EQ(dataFolder(folder.File("file/b")), std::nullopt);
  EXPECT_FALSE(MakeFolder(folder.File("file")));
}

}  // namespace
}  // namespace updown
