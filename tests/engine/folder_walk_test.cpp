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
using Kind = peer::Fault::Kind;
using Names = std::vector<std::string>;

class FolderTask : public ::testing::TestWithParam<int> {
 protected:
  FolderTask() { std::filesystem::create_directories(Served("sub/deep")); }

  std::string Served(const std::string& name) { return world.served.File(package + "/" + name); }
  std::string Local(const std::string& name) { return world.local.File(package + "/" + name); }
  void Serve(const Names& names, std::size_t size) {
    for (const std::string& name : names) {
      WriteFile(Served(name), Pattern(size, name.size() + name.front()));
    }
  }
  TaskPointer Fetch() { return world.FetchFolder(package); }
  // As an earlier run may have left it.
  void SetHalfFetched(const TransferTask& task, const std::string& name) {
    task.childRecord->SetPaths({"/" + package + "/" + name, Local(name)});
  }
  void ExpectFetched(const Names& names) {
    for (const std::string& name : names) {
      EXPECT_TRUE(std::filesystem::exists(Local(name))) << name;
      EXPECT_TRUE(ReadFile(Local(name)) == ReadFile(Served(name))) << name;
    }
  }

  EngineWorld world{test::Dialect(GetParam())};
  const std::string package = "20260102030405";
  const Names four = {"a.bin", "b.bin", "c.bin", "d.bin"};
};

TEST_P(FolderTask, WalksItsTreeWithoutAPackagesHeaders) {
  const Names headers = {package + ".ini", package + "_Start.ini"};
  const Names names = {"a.bin", "sub/b.bin", "sub/deep/c.bin", "sub/" + headers[0]};
  Serve(names, 9000);
  Serve(headers, 1);
  Serve({"empty"}, 0);
  WriteFile(Served("there"), "1234");
  std::filesystem::create_directories(Local(""));
  WriteFile(Local("there"), "same");
  const TaskPointer task = Fetch();
  EXPECT_EQ(task->childRecord->parentRecordId, task->record->recordId);
  EXPECT_EQ(task->Progress(), TaskProgress());
  EXPECT_TRUE(world.store->IsTargetInUse(Local("a.bin")));
  world.Start();
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Finished));
  EXPECT_EQ(task->childRecord->state, TransferState::Finished);
  EXPECT_EQ(task->record->totalBytes, 36000U);
  EXPECT_EQ(task->Bytes(), 36000U);
  EXPECT_EQ(task->Progress(), (TaskProgress{36004, 36004, 6, 6}));
  ExpectFetched(names);
  ExpectFetched({"empty"});
  EXPECT_EQ(ReadFile(Local("there")), "same") << "a file of the right size is passed over";
  for (const std::string& header : headers) {
    EXPECT_FALSE(std::filesystem::exists(Local(header)));
  }
}

// Four files are under way when it is paused; each goes on where it stands. A new start of the
// program knows one of them, and starts the others over.
TEST_P(FolderTask, PausedInsideItsFilesGoesOnThere) {
  const Names names = {"a.bin", "b.bin", "c.bin", "d.bin", "sub/e.bin"};
  Serve(names, 100000);  // 25 blocks each
  world.context->pace = std::chrono::milliseconds(20);
  const TaskPointer task = Fetch();
  world.Start();
  ASSERT_TRUE(world.told->Until([&] {
    return 4 == std::ranges::count_if(task->Files(),
                                      [](const auto& file) { return file->doneBytes > 0; });
  }));
  EXPECT_EQ(world.peer.OpenConnections(), 5U) << "with the session's";
  world.store->Pause(task->id);
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Stopped));
  const TaskProgress paused = task->Progress();
  EXPECT_EQ(paused.doneBytes, task->Bytes());
  EXPECT_EQ(paused.totalBytes, 400000U);
  EXPECT_EQ(paused.files, 4U);

  world.peer.ForgetRequests();
  world.store->Resume(task->id);
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
  ExpectFetched(names);
  EXPECT_GE(ReadFile(stored.paths.localPath).size(), stored.doneBytes);
}

// What would fail each file ends the others too; a stop ends them within a block.
TEST_P(FolderTask, WhatEndsItEndsAllItsFiles) {
  Serve(four, 100000);
  world.Silence(message::kReadBlock);
  world.peer.AddFault({Kind::WrongCode, message::kAttachSession, 3, 0, 0x8006});
  const TaskPointer task = Fetch();
  world.Start();
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Failed));
  EXPECT_EQ(world.told->last.code, result::kAuthentication);
  world.peer.ClearFaults();

  world.Silence(message::kReadBlock);
  world.store->Resume(task->id);
  ASSERT_TRUE(world.WaitForSilence(message::kReadBlock, 4));
  world.store->Redo(task->id);
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Finished));
  ExpectFetched(four);

  world.Silence(message::kReadBlock);
  world.store->Redo(task->id);
  ASSERT_TRUE(world.WaitForSilence(message::kReadBlock, 4));
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
    folders.push_back(world.FetchFolder(name));
  }
  world.context->pace = std::chrono::milliseconds(5);
  world.Start();
  ASSERT_TRUE(world.told->Until([&] { return world.peer.OpenConnections() == 11; }));
  ASSERT_TRUE(world.WaitForState(*world.ServeAndFetch("bytes"), TransferState::Finished));
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
  Serve({"a.bin"}, 5);
  world.peer.AddFault({Kind::WrongCode, message::kFileInformation, 0, 1, 0x8007});
  const TaskPointer task = Fetch();
  SetHalfFetched(*task, "a.bin");
  world.Start();
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Finished));
  ExpectFetched({"a.bin"});
  EXPECT_EQ(world.Count(message::kFileInformation), 2);
}

TEST_P(FolderTask, WhatFailsIsCountedAndAllElseFetched) {
  const std::tuple<const char*, bool, int> cases[] = {
      {"gone.bin", true, GetParam() == 1 ? result::kNoSuchRemoteFile : result::kNotDecodable},
      {"back\\slash", false, result::kBadCharacters},
      {"in the way", false, result::kFileOpen},
  };
  Serve({"sub/deep/z.bin"}, 5);
  std::filesystem::create_directories(Local("in the way"));
  for (const auto& [failing, halfFetched, code] : cases) {
    world.Renew(std::chrono::milliseconds(1));
    std::filesystem::remove(Local("sub/deep/z.bin"));
    const TaskPointer task = Fetch();
    halfFetched ? SetHalfFetched(*task, failing) : Serve({failing}, 1);
    Scheduler scheduler(world.context);
    ASSERT_TRUE(world.WaitForState(*task, TransferState::Failed)) << code;
    EXPECT_EQ(world.told->last.code, code);
    EXPECT_EQ(task->record->resultCode, result::WithoutSign(code));
    ExpectFetched({"sub/deep/z.bin"});
    std::filesystem::remove(Served(failing));
    EXPECT_TRUE(scheduler.Stop(std::chrono::seconds(2)));
  }
}

// A listing that breaks off is asked for once more; what is known of a folder by half is not taken
// for the whole.
TEST_P(FolderTask, ACutListingIsNoShorterFolder) {
  const Names names = {"a.bin", "b.bin", "sub/c.bin", "sub/d.bin"};
  Serve(names, 9000);
  world.peer.AddFault({Kind::CutListing, message::kList, 1, 1, 0});
  const TaskPointer task = Fetch();
  world.Start();
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Finished));
  ExpectFetched(names);
  world.peer.AddFault({Kind::CutListing, message::kList, 1, 0, 0});
  world.store->Redo(task->id);
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Failed));
  EXPECT_EQ(world.told->last.code, result::kConnection);
  world.peer.ClearFaults();
  world.store->Resume(task->id);
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Finished));
  ExpectFetched(names);
}

INSTANTIATE_TEST_SUITE_P(Dialects, FolderTask, ::testing::Values(1, 2));

}  // namespace
}  // namespace updown
