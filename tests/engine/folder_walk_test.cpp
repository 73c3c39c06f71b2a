#include "engine/folder_walk.h"

#include <gtest/gtest.h>

#include "service/messages.h"
#include "service/result_codes.h"
#include "tests/engine/engine_world.h"

namespace updown {
namespace {

using test::EngineWorld;
using test::Pattern;
using test::ReadFile;
using test::WriteFile;

class FolderTask : public ::testing::TestWithParam<int> {
 protected:
  FolderTask() { std::filesystem::create_directories(Served("sub/deep")); }

  std::string Served(const std::string& name) { return world.served.File("pkg/" + name); }
  std::string Local(const std::string& name) { return world.local.File("pkg/" + name); }
  TaskPointer Restore(const std::string& remotePath, const std::string& inFlight = {}) {
    return world.RestoreFolder(remotePath, world.local.File("pkg"), inFlight);
  }

  EngineWorld world{test::Dialect(GetParam())};
};

TEST_P(FolderTask, WalksItsTree) {
  const std::vector<std::string> names = {"a.bin", "empty", "sub/b.bin", "sub/deep/c.bin"};
  for (const std::string& name : names) {
    WriteFile(Served(name), name == "empty" ? "" : Pattern(9000, name.size()));
  }
  WriteFile(Served("there"), "1234");
  std::filesystem::create_directories(Local(""));
  WriteFile(Local("there"), "same");
  const TaskPointer task = Restore("/pkg");
  world.Start();
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Finished));
  EXPECT_EQ(task->childRecord->state, TransferState::Finished);
  EXPECT_EQ(task->record->totalBytes, 27000U);
  EXPECT_EQ(task->Bytes(), 27000U);
  for (const std::string& name : names) {
    EXPECT_EQ(ReadFile(Local(name)), ReadFile(Served(name))) << name;
  }
  EXPECT_EQ(ReadFile(Local("there")), "same") << "a file of the right size is passed over";
  EXPECT_TRUE(std::filesystem::exists(Local("empty")));
}

TEST_P(FolderTask, APackageComesWithoutItsHeadersAndSaysHowFarItIs) {
  const std::string package = "20260102030405";
  std::filesystem::create_directories(world.served.File(package + "/sub"));
  const auto served = [&](const std::string& name) {
    return world.served.File(package + "/" + name);
  };
  for (const char* name : {"a.bin", "b.bin", "sub/c.bin", "sub/20260102030405.ini"}) {
    WriteFile(served(name), Pattern(9000));
  }
  WriteFile(served(package + ".ini"), "x");
  WriteFile(served(package + "_Start.ini"), "x");
  const TaskPointer task = world.store->AddFolderDownload(
      {package, "/" + package, "fileservice", 8080}, world.local.File("pkg"));
  ASSERT_TRUE(task);
  EXPECT_EQ(task->childRecord->parentRecordId, task->record->recordId);
  EXPECT_EQ(task->Progress(), TaskProgress());
  EXPECT_TRUE(world.store->IsTargetInUse(Local("a.bin")));
  world.Start();
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Finished));
  EXPECT_EQ(task->Progress(), (TaskProgress{36000, 36000, 4, 4}));
  EXPECT_EQ(ReadFile(Local("sub/20260102030405.ini")), Pattern(9000));
  EXPECT_FALSE(std::filesystem::exists(Local(package + ".ini")));
  EXPECT_FALSE(std::filesystem::exists(Local(package + "_Start.ini")));
}

TEST_P(FolderTask, PausedInsideAFileGoesOnThere) {
  const std::string bytes = Pattern(200000);
  WriteFile(Served("a.bin"), bytes);
  WriteFile(Served("sub/b.bin"), "small");
  const TaskPointer task = Restore("/pkg");
  world.Start();
  ASSERT_TRUE(world.told->Until([&] { return task->childRecord->doneBytes > 0; }));
  world.Pause(task);
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Stopped));
  const std::uint32_t paused = task->Bytes();

  world.peer.ForgetRequests();
  world.Run(task);
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Finished));
  EXPECT_LE(world.Count(message::kReadBlock), 2 + (bytes.size() - paused) / 4096 + 1);
  EXPECT_EQ(ReadFile(Local("a.bin")), bytes);
  EXPECT_EQ(ReadFile(Local("sub/b.bin")), "small");
}

TEST_P(FolderTask, AStoppedChildWithNothingOutstandingDoesNotStopTheWalk) {
  WriteFile(Served("a.bin"), "bytes");
  const TaskPointer task = Restore("/pkg", "gone.bin");
  task->childRecord->state = TransferState::Stopped;
  world.Start();
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Finished));
  EXPECT_EQ(ReadFile(Local("a.bin")), "bytes");
}

TEST_P(FolderTask, WhatFailsIsCountedAndAllElseFetched) {
  const std::tuple<const char*, const char*, int> cases[] = {
      {"gone.bin", nullptr, GetParam() == 1 ? result::kNoSuchRemoteFile : result::kNotDecodable},
      {"", "back\\slash", result::kBadCharacters},
      {"", "in the way", result::kFileOpen},
  };
  WriteFile(Served("sub/deep/z.bin"), "bytes");
  std::filesystem::create_directories(Local("in the way"));
  for (const auto& [inFlight, failing, code] : cases) {
    world.Renew(std::chrono::milliseconds(1));
    std::filesystem::remove(Local("sub/deep/z.bin"));
    if (failing != nullptr) {
      WriteFile(Served(failing), "x");
    }
    const TaskPointer task = Restore("/pkg", inFlight);
    Scheduler scheduler(world.context);
    ASSERT_TRUE(world.WaitForState(*task, TransferState::Failed)) << code;
    EXPECT_EQ(world.told->last.code, code);
    EXPECT_EQ(task->record->resultCode, result::WithoutSign(code));
    EXPECT_EQ(ReadFile(Local("sub/deep/z.bin")), "bytes");
    if (failing != nullptr) {
      std::filesystem::remove(Served(failing));
    }
    EXPECT_TRUE(scheduler.Stop(std::chrono::seconds(2)));
  }
}

TEST_P(FolderTask, FailedListingOrFileFailsTheTask) {
  TaskPointer task = Restore("/nothing");
  world.Start();
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Failed));
  ASSERT_TRUE(world.told->Until([&] { return world.told->outcomes.size() == 1; }));
  EXPECT_EQ(world.told->outcomes[0].second, result::kAccessRefused);
  world.store->RemoveTask(task->id);

  WriteFile(Served("a.bin"), "bytes");
  std::filesystem::create_directories(Local("a.bin"));
  task = Restore("/pkg");
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Failed));
  EXPECT_EQ(task->childRecord->state, TransferState::Failed);
  EXPECT_EQ(world.told->outcomes.back().second, result::kFileOpen);
}

INSTANTIATE_TEST_SUITE_P(Dialects, FolderTask, ::testing::Values(1, 2));

}  // namespace
}  // namespace updown
