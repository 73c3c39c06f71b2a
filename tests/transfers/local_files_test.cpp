#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "tests/support/temporary_folder.h"
#include "transfers/file_move.h"
#include "transfers/local_removal.h"

namespace updown::test {
namespace {

namespace fs = std::filesystem;

class LocalFiles : public ::testing::Test {
 protected:
  LocalFiles() {
    fs::create_directories(disk_.File("outside/inner"));
    WriteFile(disk_.File("outside/inner/keep"), "keep");
    // A folder with files, a link to a folder and one to nothing.
    fs::create_directories(tree_ + "/a/b");
    WriteFile(tree_ + "/a/b/deep", "deep");
    fs::create_symlink(disk_.File("outside"), tree_ + "/a/folderLink");
    fs::create_symlink("nowhere", tree_ + "/dead");
  }
  ~LocalFiles() override { EXPECT_EQ(ReadFile(disk_.File("outside/inner/keep")), "keep"); }

  // What stands in a folder, hidden names too.
  static std::size_t Count(const std::string& folder) {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
  }

  TemporaryFolder disk_;
  const std::string tree_ = disk_.File("tree");
};

TEST_F(LocalFiles, RemovalFollowsNoLinkAndWantsAName) {
  fs::create_directory_symlink(disk_.File("outside"), disk_.File("link"));
  for (const char* const path : {"link/", "tree", "missing", "missing/too"}) {
    EXPECT_TRUE(DeleteLocal(disk_.File(path))) << path;
    EXPECT_FALSE(fs::exists(fs::symlink_status(disk_.File(path)))) << path;
  }
  for (const std::string& path :
       {std::string(), disk_.File("outside/."), disk_.File("outside/inner/..")}) {
    EXPECT_FALSE(DeleteLocal(path)) << path;
  }
}

// Once by renaming, once by copying as towards another file system.
class LocalMove : public LocalFiles, public ::testing::WithParamInterface<MoveRoad> {
 protected:
  LocalMove() {
    fs::create_directory(target_);
    WriteFile(source_, "new");
  }
  auto Move(const std::string& path) { return MoveLocal(path, target_, GetParam()); }

  const std::string target_ = disk_.File("target");
  const std::string source_ = disk_.File("file");
  const std::string moved_ = target_ + "/file";
};

INSTANTIATE_TEST_SUITE_P(Roads, LocalMove, ::testing::Values(MoveRoad::Rename, MoveRoad::Copy),
                         [](const auto& road) {
                           return road.param == MoveRoad::Copy ? "Copy" : "Rename";
                         });

TEST_P(LocalMove, MovesAFileAlsoOntoAnother) {
  for (const char* const old : {"none", "file", "sameFile"}) {
    SCOPED_TRACE(old);
    WriteFile(source_, "new");
    fs::permissions(source_, fs::perms::owner_read);
    const auto written = fs::last_write_time(source_);
    fs::remove(moved_);
    if (old == std::string("file")) {
      WriteFile(moved_, "old");
    } else if (old == std::string("sameFile")) {
      fs::create_hard_link(source_, moved_);
    }
    EXPECT_EQ(Move(source_), moved_);
    EXPECT_EQ(ReadFile(moved_), "new");
    EXPECT_EQ(fs::last_write_time(moved_), written);
    EXPECT_EQ(fs::status(moved_).permissions(), fs::perms::owner_read);
    EXPECT_FALSE(fs::exists(source_));
    EXPECT_EQ(Count(target_), 1U);
  }
}

TEST_P(LocalMove, ReplacesNoFolder) {
  fs::create_directory(moved_);
  EXPECT_FALSE(Move(source_));
  EXPECT_EQ(ReadFile(source_), "new");
  EXPECT_TRUE(fs::is_directory(moved_));
  fs::create_directory(target_ + "/tree");
  EXPECT_FALSE(Move(tree_));
  EXPECT_EQ(ReadFile(tree_ + "/a/b/deep"), "deep");
  EXPECT_EQ(Count(target_), 2U);
}

TEST_P(LocalMove, MovesATreeWithItsLinks) {
  EXPECT_TRUE(Move(tree_));
  EXPECT_EQ(ReadFile(target_ + "/tree/a/b/deep"), "deep");
  EXPECT_EQ(fs::read_symlink(target_ + "/tree/dead"), "nowhere");
  EXPECT_TRUE(fs::is_symlink(target_ + "/tree/a/folderLink"));
  EXPECT_FALSE(fs::exists(tree_));
  EXPECT_EQ(Count(target_), 1U);
}

TEST_P(LocalMove, LeavesAllAsItWasAfterAFailure) {
  ASSERT_EQ(mkfifo((tree_ + "/a/b/pipe").c_str(), 0600), 0);
  EXPECT_FALSE(MoveLocal(tree_, disk_.File("missing"), GetParam()));
  // A folder cannot be renamed into itself, and a pipe cannot be copied.
  EXPECT_FALSE(GetParam() == MoveRoad::Copy ? Move(tree_) : MoveLocal(tree_, tree_ + "/a"));
  EXPECT_FALSE(Move(disk_.File("missing")));
  EXPECT_FALSE(MoveLocal(source_, disk_.Path(), GetParam()));  // it is there already
  EXPECT_EQ(ReadFile(tree_ + "/a/b/deep"), "deep");
  EXPECT_EQ(Count(tree_ + "/a"), 2U);
  EXPECT_EQ(Count(target_), 0U);
  EXPECT_EQ(ReadFile(source_), "new");
}

TEST_F(LocalFiles, MovesAcrossFileSystems) {
  // Memory and disk where the machine has both; the copy's own road is tested above in any case.
  std::string other = "/dev/shm/updown-XXXXXX";
  if (mkdtemp(other.data()) == nullptr) {
    other = disk_.File("outside");
  }
  EXPECT_EQ(MoveLocal(tree_, other + "/"), other + "/tree");
  EXPECT_EQ(ReadFile(other + "/tree/a/b/deep"), "deep");
  EXPECT_FALSE(fs::exists(tree_));
  fs::remove_all(other + "/tree");
  rmdir(other.c_str());  // which leaves a folder that holds more
}

}  // namespace
}  // namespace updown::test
