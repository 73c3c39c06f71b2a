#include "transfers/local_files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "localdata/files.h"
#include "tests/support/temporary_folder.h"

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
  static auto Count(const std::string& folder) {
    return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
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
  std::error_code Move(const std::string& path, bool replace = false) {
    return MoveLocal(path, target_ + "/" + fs::path(path).filename().string(), replace, progress_,
                     GetParam());
  }

  MoveProgress progress_;
  const std::string target_ = disk_.File("target");
  const std::string source_ = disk_.File("file");
  const std::string moved_ = target_ + "/file";
};

INSTANTIATE_TEST_SUITE_P(Roads, LocalMove, ::testing::Values(MoveRoad::Rename, MoveRoad::Copy),
                         [](const auto& road) {
                           return road.param == MoveRoad::Copy ? "Copy" : "Rename";
                         });

TEST_P(LocalMove, ReplacesAFileOnlyWhenToldTo) {
  for (const std::string old : {"none", "file", "sameFile", "folder"}) {
    SCOPED_TRACE(old);
    WriteFile(source_, "new");
    fs::permissions(source_, fs::perms::owner_read);
    const auto written = fs::last_write_time(source_);
    fs::remove(moved_);
    if (old == "folder") {
      fs::create_directory(moved_);
    } else if (old == "file") {
      WriteFile(moved_, "old");
    } else if (old == "sameFile") {
      fs::create_hard_link(source_, moved_);
    }
    EXPECT_EQ(!Move(source_), old == "none");
    const bool replaced = !Move(source_, true);
    EXPECT_EQ(replaced, old == "file" || old == "sameFile");
    EXPECT_EQ(fs::exists(source_), old == "folder");
    EXPECT_EQ(Count(target_), 1);
    if (old != "folder") {
      EXPECT_EQ(ReadFile(moved_), "new");
      EXPECT_EQ(fs::last_write_time(moved_), written);
      EXPECT_EQ(fs::status(moved_).permissions(), fs::perms::owner_read);
    }
  }
}

TEST_P(LocalMove, MovesATreeWithItsLinks) {
  EXPECT_EQ(Move(tree_), std::error_code());
  EXPECT_EQ(ReadFile(target_ + "/tree/a/b/deep"), "deep");
  EXPECT_EQ(fs::read_symlink(target_ + "/tree/dead"), "nowhere");
  EXPECT_TRUE(fs::is_symlink(target_ + "/tree/a/folderLink"));
  EXPECT_FALSE(fs::exists(tree_));
  EXPECT_EQ(Count(target_), 1);
}

TEST_P(LocalMove, LeavesAllAsItWasAfterAFailure) {
  ASSERT_EQ(mkfifo((tree_ + "/a/b/pipe").c_str(), 0600), 0);
  EXPECT_TRUE(MoveLocal(tree_, disk_.File("missing/tree"), false, progress_, GetParam()));
  EXPECT_TRUE(MoveLocal(tree_, tree_ + "/a/tree", false, progress_, GetParam()));
  EXPECT_TRUE(Move(disk_.File("missing")));
  if (GetParam() == MoveRoad::Copy) {
    EXPECT_TRUE(Move(tree_)) << "a pipe cannot be copied";
    progress_.stop = true;
    EXPECT_EQ(Move(source_), std::errc::operation_canceled);
  }
  EXPECT_EQ(ReadFile(tree_ + "/a/b/deep"), "deep");
  EXPECT_EQ(Count(tree_ + "/a"), 2);
  EXPECT_EQ(Count(target_), 0);
  EXPECT_EQ(ReadFile(source_), "new");
}

TEST_F(LocalFiles, MovesAcrossFileSystems) {
  // Memory and disk where the machine has both; the copy's own road is tested above in any case.
  std::string other = "/dev/shm/updown-XXXXXX";
  if (mkdtemp(other.data()) == nullptr) {
    other = disk_.File("outside");
  }
  MoveProgress progress;
  EXPECT_EQ(MoveTarget(tree_ + "/", other + "/"), other + "/tree");
  EXPECT_EQ(MoveTarget(tree_, disk_.Path()), std::nullopt) << "it is there already";
  EXPECT_FALSE(MoveLocal(tree_, other + "/tree", false, progress));
  EXPECT_EQ(ReadFile(other + "/tree/a/b/deep"), "deep");
  EXPECT_FALSE(fs::exists(tree_));
  fs::remove_all(other + "/tree");
  rmdir(other.c_str());  // which leaves a folder that holds more
}

}  // namespace
}  // namespace updown::test
