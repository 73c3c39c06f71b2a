#include "engine/folder_walk.h"

#include <gtest/gtest.h>

#include "service/messages.h"
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
  const std::string longName(250, 'l');
  const std::vector<std::string> names = {"a.bin", "empty", "sub/b.bin", "sub/deep/c.bin"};
  for (const std::string& name : names) {
    WriteFile(Served(name), name == "empty" ? "" : Pattern(9000, name.size()));
  }
  for (const std::string& name : {std::string("back\\slash"), longName, std::string("there")}) {
    WriteFile(Served(name), "1234");
  }
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
  EXPECT_FALSE(std::filesystem::exists(Local("back\\slash")));
  EXPECT_FALSE(std::filesystem::exists(Local(longName)));
}

TEST_P(FolderTask, PausedInsideAFileGoesOnThere) {
  const std::string bytes = Pattern(200000);
  WriteFile(Served("a.bin"), bytes);
  WriteFile(Served("sub/b.bin"), "small");
  const TaskPointer task = Restore("/pkg");
  world.Start();
  ASSERT_TRUE(world.told->Until([&] { return task->childRecord->doneBytes > 0; }));
  task->record->state = TransferState::Stopped;
  task->childRecord->state = TransferState::Stopped;
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Stopped));
  const std::uint32_t paused = task->Bytes();

  world.peer.ForgetRequests();
  task->childRecord->state = TransferState::Queued;
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

TEST_P(FolderTask, AFileInFlightThatFailsIsTriedAgain) {
  std::filesystem::create_directories(Local(""));
  const TaskPointer task = Restore("/pkg", "late.bin");
  world.Start();
  ASSERT_TRUE(world.told->Until([&] { return world.told->outcomes.size() >= 2; }));
  EXPECT_EQ(task->record->state, TransferState::Queued);
  WriteFile(Served("late.bin"), "bytes");
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Finished));
  EXPECT_EQ(ReadFile(Local("late.bin")), "bytes");
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
