#include "peer/stand_in.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>

#include "peer/arguments.h"
#include "peer/faults.h"
#include "peer/files.h"
#include "tests/support/temporary_folder.h"

// Bytes and refusals of the stand-in are seen by the tests of the client, which writes its own.

namespace updown::peer {
namespace {

namespace fs = std::filesystem;
using test::ReadFile;
using test::TemporaryFolder;
using test::WriteFile;

TEST(ServedFolder, NothingLeavesTheRoot) {
  const TemporaryFolder area;
  const fs::path root = area.File("root");
  fs::create_directories(root / "p");
  WriteFile(root / "p/a.txt", "0123456789");
  WriteFile(area.File("secret"), "x");
  fs::create_directory_symlink(area.Path(), root / "out");
  fs::create_symlink(area.File("secret"), root / "link");
  const ServedFolder folder(root.string());
  for (const std::string& path :
       {std::string("/../secret"), std::string("/p/../../secret"), std::string("/out/secret"),
        std::string("/link"), area.File("secret"), std::string("/p/a.txt\0x", 10)}) {
    SCOPED_TRACE(path);
    std::vector<FolderEntry> entries;
    FolderEntry entry;
    Bytes block;
    EXPECT_NE(folder.ListEntries(path, entries), Refusal::None);
    EXPECT_NE(folder.FileInformation(path, entry), Refusal::None);
    EXPECT_NE(folder.ReadBlock(path, 0, 9, block), Refusal::None);
    EXPECT_NE(folder.WriteBlock(path, 0, {}), Refusal::None);
    EXPECT_NE(folder.CreateFolder(path), Refusal::None);
    EXPECT_NE(folder.RemoveFolder(path), Refusal::None);
    EXPECT_NE(folder.RemoveFile(path), Refusal::None);
    EXPECT_NE(folder.Rename(path, "/stolen"), Refusal::None);
    EXPECT_NE(folder.Rename("/p/a.txt", path), Refusal::None);
  }
  EXPECT_EQ("x", ReadFile(area.File("secret")));
  EXPECT_EQ("0123456789", ReadFile(root / "p/a.txt"));
}

TEST(FaultPlan, StrikesAfterSkippingAndThenSoManyTimes) {
  using Kind = Fault::Kind;
  FaultPlan plan;
  plan.Add({Kind::Stall, 4104, 2, 2, 0});
  plan.Add({Kind::DropAfter, 0, 5, 0, 0});
  std::string struck;
  for (int i = 0; i < 8; ++i) {
    EXPECT_FALSE(plan.Meet(1));
    const auto fault = plan.Meet(4104);
    struck += !fault ? '-' : fault->kind == Kind::Stall ? 's' : 'd';
  }
  EXPECT_EQ("--ss-ddd", struck);
}

TEST(ParseArguments, RefusesWhatMakesNoSense) {
  const std::vector<std::string> bad[] = {
      {},
      {"--root"},
      {"--nothing"},
      {"--root", "d", "--dialect", "3"},
      {"--root", "d", "--block", "12k"},
      {"--root", "d", "--port", "65536"},
      {"--root", "d", "--login", "ann"},
      {"--root", "d", "--fault", "explode:1"},
      {"--root", "d", "--fault", "stall:1:skip=-1"},
  };
  for (const auto& words : bad) {
    EXPECT_THROW(ParseArguments(words), std::invalid_argument);
  }
}

}  // namespace
}  // namespace updown::peer
