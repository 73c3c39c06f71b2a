#include "engine/folder_walk.h"

#include <gtest/gtest.h>

#include <algorithm>

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

// Four files are under way when it is paused; each goes on where it stands. A new start of the
// program knows one of them, and starts the others over.
TEST_P(FolderTask, PausedInsideItsFilesGoesOnThere) {
  const std::string bytes = Pattern(100000);  // 25 blocks
  const std::vector<std::string> names = {"a.bin", "b.bin", "c.bin", "d.bin", "sub/e.bin"};
  for (const std::string& name : names) {
    WriteFile(Served(name), bytes);
  }
  world.Renew(std::chrono::milliseconds(20));
  const TaskPointer task = Restore("/pkg");
  const auto halfFetched = [&] {
    return std::ranges::count_if(task->Files(),
                                 [](const auto& file) { return file->doneBytes > 0; });
  };
  world.Start();
  ASSERT_TRUE(world.told->Until([&] { return halfFetched() == 4; }));
  EXPECT_EQ(world.peer.OpenConnections(), 5U) << "with the session's";
  world.Pause(task);
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Stopped));
  const TaskProgress paused = task->Progress();
  EXPECT_EQ(paused.doneBytes, task->Bytes());
  EXPECT_EQ(paused.totalBytes, 4 * bytes.size());
  EXPECT_EQ(paused.files, 4U);

  world.peer.ForgetRequests();
  world.Run(task);
  EXPECT_TRUE(world.told->Until([&] {
    const TaskProgress now = task->Progress();
    EXPECT_GE(now.doneBytes, paused.doneBytes);
    EXPECT_GE(now.files, paused.files);
    return world.Count(message::kReadBlock) > 8;
  }));
  const StoredRecord stored = task->childRecord->Store();
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Finished));
  EXPECT_EQ(world.Count(message::kReadBlock), 5 * 25 - paused.doneBytes / 4096);
  EXPECT_EQ(task->Progress(), (TaskProgress{500000, 500000, 5, 5}));
  for (const std::string& name : names) {
    EXPECT_EQ(ReadFile(Local(name)), bytes) << name;
  }
  EXPECT_GE(ReadFile(stored.paths.localPath).size(), stored.doneBytes);
}

// A file whose connection is lost for good, or a disk that is full, ends the others too; a stop
// ends them within a block.
TEST_P(FolderTask, WhatEndsItEndsAllItsFiles) {
  const std::string bytes = Pattern(100000);
  for (const char* name : {"a.bin", "b.bin", "c.bin", "d.bin"}) {
    WriteFile(Served(name), bytes);
  }
  const TaskPointer task = Restore("/pkg");
  const auto stalled = [&] { return world.Count(message::kReadBlock) >= 4; };
  world.peer.AddFault({peer::Fault::Kind::WrongCode, message::kAttachSession, 3, 0, 0x8006});
  world.peer.AddFault({peer::Fault::Kind::Stall, message::kReadBlock, 0, 0, 0});
  world.Start();
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Failed));
  EXPECT_EQ(world.told->last.code, result::kAuthentication);
  world.peer.ClearFaults();

  world.peer.ForgetRequests();
  world.peer.AddFault({peer::Fault::Kind::Stall, message::kReadBlock, 0, 0, 0});
  world.Run(task);
  ASSERT_TRUE(world.told->Until(stalled));
  world.peer.ClearFaults();
  world.Redo(task);
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Finished));
  EXPECT_EQ(ReadFile(Local("d.bin")), bytes);

  world.peer.ForgetRequests();
  world.peer.AddFault({peer::Fault::Kind::Stall, message::kReadBlock, 0, 0, 0});
  world.Redo(task);
  ASSERT_TRUE(world.told->Until(stalled));
  world.store->RemoveTask(task->id, TaskStore::LocalFiles::Remove);
  ASSERT_TRUE(world.told->Until([&] { return !task->Running(); }));
  EXPECT_FALSE(std::filesystem::exists(Local("")));
  EXPECT_TRUE(world.told->Until([&] { return world.peer.OpenConnections() == 1; }));
}

// Three folders would take all ten workers for long: a file that the user asks for gets one.
TEST_P(FolderTask, LeavesAWorkerToWhatTheUserAsksFor) {
  const std::string bytes = Pattern(200000);
  std::vector<TaskPointer> folders;
  for (const std::string name : {"x", "y", "z"}) {
    std::filesystem::create_directories(world.served.File(name));
    for (const char* file : {"/1", "/2", "/3", "/4", "/5"}) {
      WriteFile(world.served.File(name + file), bytes);
    }
    folders.push_back(world.store->AddFolderDownload({name, "/" + name, "fileservice", 8080},
                                                     world.local.File(name)));
  }
  world.context->pace = std::chrono::milliseconds(5);
  world.Start();
  world.context->schedulerWake.Set();
  ASSERT_TRUE(world.told->Until([&] { return world.peer.OpenConnections() == 11; }));
  WriteFile(world.served.File("f"), "bytes");
  const TaskPointer wanted = world.Fetch("f");
  ASSERT_TRUE(world.WaitForState(*wanted, TransferState::Finished));
  EXPECT_TRUE(std::ranges::all_of(folders, &TransferTask::Running));
  for (const TaskPointer& folder : folders) {
    ASSERT_TRUE(world.WaitForState(*folder, TransferState::Finished));
    EXPECT_EQ(folder->Progress(), (TaskProgress{1000000, 1000000, 5, 5}));
  }
  EXPECT_EQ(world.peer.MostConnections(), 11U);
  EXPECT_EQ(ReadFile(world.local.File("z/5")), bytes);
}

// What an earlier run left half fetched fails once, and comes with the listing.
TEST_P(FolderTask, AHalfFetchedFileThatTheListingBringsIsNoFailure) {
  WriteFile(Served("a.bin"), "bytes");
  world.peer.AddFault({peer::Fault::Kind::WrongCode, message::kFileInformation, 0, 1, 0x8007});
  const TaskPointer task = Restore("/pkg", "a.bin");
  world.Start();
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Finished));
  EXPECT_EQ(ReadFile(Local("a.bin")), "bytes");
  EXPECT_EQ(world.Count(message::kFileInformation), 2);
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

// A listing that breaks off is asked for once more; what is known of a folder by half is not taken
// for the whole.
TEST_P(FolderTask, ACutListingIsNoShorterFolder) {
  const std::vector<std::string> names = {"a.bin", "b.bin", "sub/c.bin", "sub/d.bin"};
  for (const std::string& name : names) {
    WriteFile(Served(name), Pattern(9000, name.size()));
  }
  for (const std::uint32_t times : {1U, 0U}) {
    world.Renew(std::chrono::milliseconds(1));
    std::filesystem::remove_all(Local(""));
    world.peer.AddFault({peer::Fault::Kind::CutListing, message::kList, 1, times, 0});
    const TaskPointer task = Restore("/pkg");
    Scheduler scheduler(world.context);
    ASSERT_TRUE(
        world.WaitForState(*task, times == 0 ? TransferState::Failed : TransferState::Finished));
    EXPECT_EQ(world.told->last.code, times == 0 ? result::kConnection : result::kOk);
    world.peer.ClearFaults();
    world.Run(task);
    ASSERT_TRUE(world.WaitForState(*task, TransferState::Finished));
    for (const std::string& name : names) {
      EXPECT_EQ(ReadFile(Local(name)), ReadFile(Served(name))) << name;
    }
    EXPECT_TRUE(scheduler.Stop(std::chrono::seconds(2)));
  }
}

TEST_P(FolderTask, AFailedListingFailsTheTask) {
  const TaskPointer task = Restore("/nothing");
  world.Start();
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Failed));
  ASSERT_TRUE(world.told->Until([&] { return world.told->outcomes.size() == 1; }));
  EXPECT_EQ(world.told->outcomes[0].second, result::kAccessRefused);
}

INSTANTIATE_TEST_SUITE_P(Dialects, FolderTask, ::testing::Values(1, 2));

}  // namespace
}  // namespace updown
