#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "status/file_move.h"
#include "status/local_removal.h"
#include "tests/support/temporary_folder.h"

namespace updown {
namespace {

namespace fs = std::filesystem;
using test::ReadFile;
using test::WriteFile;

class LocalFiles : public testing::Test {
 protected:
  LocalFiles() {
    fs::create_directories(disk_.File("outside/inner"));
    WriteFile(disk_.File("outside/inner/keep"), "keep");
  }

  // A folder with files, a link to a folder and one to nothing.
  std::string MakeTree() {
    std::string tree = disk_.File("tree");
    fs::create_directories(tree + "/a/b");
    WriteFile(tree + "/a/b/deep", "deep");
    WriteFile(tree + "/file", "bytes");
    fs::create_symlink(disk_.File("outside"), tree + "/a/folderLink");
    fs::create_symlink("nowhere", tree + "/dead");
    return tree;
  }
  // What stands in a folder, hidden names too.
  static std::size_t Count(const std::string& folder) {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
  }
  bool OutsideIsWhole() { return ReadFile(disk_.File("outside/inner/keep")) == "keep"; }

  test::TemporaryFolder disk_;
};

TEST_F(LocalFiles, RemovesATreeAndFollowsNoLink) {
  const std::string tree = MakeTree();
  fs::create_directory_symlink(disk_.File("outside"), disk_.File("link"));
  EXPECT_TRUE(DeleteLocal(disk_.File("link/")));
  EXPECT_FALSE(fs::is_symlink(disk_.File("link")));
  EXPECT_TRUE(DeleteLocal(tree));
  EXPECT_FALSE(fs::exists(tree));
  EXPECT_TRUE(OutsideIsWhole());
}

TEST_F(LocalFiles, RefusesPathsWithoutAName) {
  for (const std::string& path :
       {std::string(), disk_.File("outside/."), disk_.File("outside/inner/..")}) {
    EXPECT_FALSE(DeleteLocal(path)) << path;
  }
  EXPECT_TRUE(OutsideIsWhole());
  EXPECT_TRUE(DeleteLocal(disk_.File("missing")));
  EXPECT_TRUE(DeleteLocal(disk_.File("missing/too")));
}

// Once by renaming, once by copying as towards another file system.
class LocalMove : public LocalFiles, public testing::WithParamInterface<MoveRoad> {
 protected:
  LocalMove() {
    fs::create_directory(target_);
    WriteFile(source_, "new");
  }
  auto Move(const std::string& path) { return MoveLocal(path, target_, GetParam()); }

  const std::string target_ = disk_.File("target");
  const std::string source_ = disk_.File("file");
};

INSTANTIATE_TEST_SUITE_P(Roads, LocalMove, testing::Values(MoveRoad::Rename, MoveRoad::Copy),
                         [](const auto& road) {
                           return road.param == MoveRoad::Copy ? "Copy" : "Rename";
                         });

TEST_P(LocalMove, MovesAFile) {
  fs::permissions(source_, fs::perms::owner_read);
  const auto written = fs::last_write_time(source_);
  EXPECT_EQ(Move(source_), target_ + "/file");
  EXPECT_EQ(ReadFile(target_ + "/file"), "new");
  EXPECT_EQ(fs::last_write_time(target_ + "/file"), written);
  EXPECT_EQ(fs::status(target_ + "/file").permissions(), fs::perms::owner_read);
  EXPECT_FALSE(fs::exists(source_));
  EXPECT_EQ(Count(target_), 1U);
}

TEST_P(LocalMove, ReplacesAFileButNeverAFolder) {
  WriteFile(target_ + "/file", "old");
  EXPECT_TRUE(Move(source_));
  EXPECT_EQ(ReadFile(target_ + "/file"), "new");
  EXPECT_EQ(Count(target_), 1U);

  WriteFile(disk_.File("taken"), "new");
  fs::create_directory(target_ + "/taken");
  EXPECT_FALSE(Move(disk_.File("taken")));
  EXPECT_EQ(ReadFile(disk_.File("taken")), "new");
  EXPECT_TRUE(fs::is_directory(target_ + "/taken"));
  EXPECT_EQ(Count(target_), 2U);
}

TEST_P(LocalMove, MovesATreeOntoNothingOnly) {
  const std::string tree = MakeTree();
  fs::create_directory(target_ + "/tree");
  EXPECT_FALSE(Move(tree));
  EXPECT_EQ(ReadFile(tree + "/a/b/deep"), "deep");
  fs::remove(target_ + "/tree");
  EXPECT_TRUE(Move(tree));
  EXPECT_EQ(ReadFile(target_ + "/tree/a/b/deep"), "deep");
  EXPECT_EQ(fs::read_symlink(target_ + "/tree/dead"), "nowhere");
  EXPECT_TRUE(fs::is_symlink(target_ + "/tree/a/folderLink"));
  EXPECT_FALSE(fs::exists(tree));
  EXPECT_TRUE(OutsideIsWhole());
  EXPECT_EQ(Count(target_), 1U);
}

TEST_P(LocalMove, LeavesAllAsItWasAfterAFailure) {
  const std::string tree = MakeTree();
  ASSERT_EQ(mkfifo((tree + "/a/b/pipe").c_str(), 0600), 0);
  EXPECT_FALSE(MoveLocal(tree, disk_.File("missing"), GetParam()));
  // A folder cannot be renamed into itself, and a pipe cannot be copied.
  EXPECT_FALSE(GetParam() == MoveRoad::Copy ? Move(tree) : MoveLocal(tree, tree + "/a"));
  EXPECT_EQ(ReadFile(tree + "/a/b/deep"), "deep");
  EXPECT_EQ(Count(tree + "/a"), 2U);
  EXPECT_EQ(Count(target_), 0U);
  EXPECT_FALSE(Move(disk_.File("missing")));
  EXPECT_FALSE(MoveLocal(source_, disk_.Path(), GetParam()));  // it is there already
  EXPECT_EQ(ReadFile(source_), "new");
}

TEST_P(LocalMove, LeavesOneOfTwoNamesOfAFile) {
  fs::create_hard_link(source_, target_ + "/file");
  EXPECT_TRUE(Move(source_));
  EXPECT_FALSE(fs::exists(source_));
  EXPECT_EQ(ReadFile(target_ + "/file"), "new");
}

TEST_F(LocalFiles, MovesAcrossFileSystems) {
  // Memory and disk where the machine has both; the copy's own road is tested above in any case.
  std::string other = "/dev/shm/updown-XXXXXX";
  if (mkdtemp(other.data()) == nullptr) {
    other = disk_.File("outside");
  }
  const std::string tree = MakeTree();
  EXPECT_EQ(MoveLocal(tree + "/file", other + "/"), other + "/file");
  EXPECT_EQ(MoveLocal(tree, other), other + "/tree");
  EXPECT_EQ(ReadFile(other + "/file"), "bytes");
  EXPECT_EQ(ReadFile(other + "/tree/a/b/deep"), "deep");
  EXPECT_FALSE(fs::exists(tree));
  if (other.starts_with("/dev/shm/updown-")) {
    fs::remove_all(other);
  }
}

}  // namespace
}  // namespace updown
