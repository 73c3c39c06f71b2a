// A move that the end of the program breaks off.
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>

#include "tests/support/temporary_folder.h"
#include "transfers/file_move.h"

namespace updown::test {
namespace {

namespace fs = std::filesystem;

TEST(MoveStop, LeavesTheSourceAndNoCopy) {
  const TemporaryFolder disk;
  const std::string tree = disk.File("tree");
  const std::string target = disk.File("target");
  fs::create_directories(tree + "/a");
  fs::create_directory(target);
  std::ofstream(tree + "/a/file") << "bytes";
  std::atomic<bool> stop = true;
  EXPECT_FALSE(MoveLocal(tree, target, MoveRoad::Copy, &stop));
  EXPECT_EQ(fs::file_size(tree + "/a/file"), 5U);
  EXPECT_TRUE(fs::is_empty(target));
  stop = false;
  EXPECT_EQ(MoveLocal(tree, target, MoveRoad::Copy, &stop), target + "/tree");
}

}  // namespace
}  // namespace updown::test
