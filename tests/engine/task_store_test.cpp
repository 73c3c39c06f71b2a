#include "engine/task_store.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <filesystem>
#include <utility>

#include "tests/support/temporary_folder.h"

namespace updown {
namespace {

class Tasks : public ::testing::Test {
 protected:
  TaskPointer Add(const std::string& remotePath, bool keep = true) {
    return store.AddDownload({"name", remotePath, "server", 80}, "/local", keep);
  }
  std::shared_ptr<TransferRecord> AddStored(std::uint32_t id, std::uint32_t parent, bool folder) {
    const auto record = std::make_shared<TransferRecord>();
    record->recordId = id;
    record->parentRecordId = parent;
    record->isFolder = folder ? 1 : 0;
    store.AddStoredRecord(record);
    return record;
  }

  LaunchState launch;
  std::shared_ptr<TaskQueue> queue = std::make_shared<TaskQueue>();
  TaskStore store{queue, launch};
};

TEST_F(Tasks, NumbersAreTheLowestFreeOnes) {
  Add("/1");
  store.RemoveTask(Add("/2")->id);
  AddStored(3, 0, false);
  EXPECT_EQ(Add("/3")->record->recordId, 2U);
  EXPECT_EQ(Add("/4")->record->recordId, 4U);
}

TEST_F(Tasks, DuplicatesByCaseEndAndFolder) {
  const std::tuple<const char*, const char*, bool> cases[] = {
      {"/pkg/x.zip", "/PKG/X.ZIP", true},
      {"/a/b", "/a/b/", true},
      {"/a/b/", "/a/b", true},
      {"/pkg", "/pkg/sub/x.zip", true},
      {"/pkg/x.zip", "/pkg", false},
      {"/pkg", "/pkg2", false},
      {"/", "/anything", true},
      {"/pkg", "", true},
      {"/\u00c4", "/\u00e4", false},
  };
  for (const auto& [existing, wanted, duplicate] : cases) {
    const TaskPointer task = Add(existing);
    EXPECT_EQ(store.IsDuplicate(wanted), duplicate) << existing;
    store.RemoveTask(task->id);
  }
  Add("/x")->record->state = TransferState::Finished;
  EXPECT_TRUE(store.IsDuplicate("/x"));
  Add("/header", false);
  EXPECT_FALSE(store.IsDuplicate("/header")) << "the program's own";
  AddStored(9, 4, false)->SetPaths({"/child", "/c"});
  EXPECT_FALSE(store.IsDuplicate("/child"));
}

TEST_F(Tasks, WhatIsUnfinishedFollowsARenamedFolder) {
  const std::string fits(245, 'x');
  const std::tuple<std::string, TransferState, std::string> cases[] = {
      {"/old/a/b", TransferState::Queued, "/renamed/a/b"},
      {"/old", TransferState::Stopped, "/renamed"},
      {"/old/c", TransferState::Failed, "/renamed/c"},
      {"/old/d", TransferState::Finished, "/old/d"},
      {"/older/e", TransferState::Queued, "/older/e"},
      {"/x/old/f", TransferState::Queued, "/x/old/f"},
      {"/old/" + fits + "123456", TransferState::Queued, "/old/" + fits + "123456"},
  };
  std::vector<TaskPointer> tasks;
  for (const auto& [path, state, moved] : cases) {
    tasks.push_back(Add(path));
    tasks.back()->record->state = state;
  }
  tasks[0]->childRecord = std::make_shared<TransferRecord>();
  tasks[0]->childRecord->SetPaths({"/old/a/b/c", "/local"});
  EXPECT_EQ(store.FollowRename("/old", "/renamed"),
            (std::vector{tasks[0]->id, tasks[1]->id, tasks[2]->id}));
  for (std::size_t i = 0; i < tasks.size(); ++i) {
    EXPECT_EQ(tasks[i]->record->RemotePath(), std::get<2>(cases[i]));
  }
  EXPECT_EQ(tasks[0]->childRecord->RemotePath(), "/renamed/a/b/c");
  EXPECT_TRUE(store.IsDuplicate("/renamed/a/b"));
}

TEST_F(Tasks, DraftsThatDoNotFitMakeNothing) {
  EXPECT_NE(Add(std::string(258, 'x').insert(0, 1, '/')), nullptr);
  EXPECT_EQ(Add(std::string(259, 'x').insert(0, 1, '/')), nullptr);
  EXPECT_EQ(store.AddDownload({"", "/x", "", 80}, "/local", true), nullptr);
  EXPECT_EQ(store.AddDownload({"x", "/x", "", 80}, std::string(260, 'l'), true), nullptr);
  EXPECT_EQ(store.Records().size(), 1U);
}

TEST_F(Tasks, OnlyUnfinishedKeptTasksMeetTheLimit) {
  Add("/header", false);
  Add("/whole")->record->state = TransferState::Finished;
  for (const char* path : {"/1", "/2", "/3", "/4", "/5"}) {
    EXPECT_FALSE(store.StreamLimitReached());
    Add(path)->record->state = TransferState::Failed;
  }
  EXPECT_TRUE(store.StreamLimitReached());
}

TEST_F(Tasks, RestoreMakesATaskForEachTopRecordInOrder) {
  const auto failed = AddStored(3, 0, true);
  failed->state = TransferState::Failed;
  const auto file = AddStored(1, 0, false);
  const auto child = AddStored(7, 5, false);
  const auto folder = AddStored(5, 0, true);
  AddStored(8, 5, false);
  const auto doubled = AddStored(5, 0, true);
  std::vector<TaskId> ids;
  EXPECT_TRUE(store.RestoreTasks([&](TaskId task) {
    EXPECT_EQ(store.Find(task), nullptr) << "before a worker can know it";
    ids.push_back(task);
  }));
  EXPECT_FALSE(store.RestoreTasks(nullptr));
  std::vector<std::shared_ptr<TransferRecord>> records, children;
  for (const TaskId id : ids) {
    records.push_back(store.Find(id)->record);
    children.push_back(store.Find(id)->childRecord);
  }
  ASSERT_EQ(records, (std::vector{failed, file, folder, doubled}));
  EXPECT_EQ(children[0]->parentRecordId, 3U);
  EXPECT_EQ(children[0]->state, TransferState::Failed);
  EXPECT_EQ(children[1], nullptr);
  EXPECT_EQ(children[2], child);
  EXPECT_NE(doubled->recordId, folder->recordId);
  EXPECT_EQ(children[3]->parentRecordId, doubled->recordId);
  EXPECT_EQ(store.Records().size(), 8U);
  EXPECT_EQ(queue->NextRunnableTask()->id, ids[1]);

  store.RemoveTask(ids[2]);
  EXPECT_EQ(store.Find(ids[2]), nullptr);
  EXPECT_EQ(store.Records().size(), 6U);
  EXPECT_EQ(folder->state, TransferState::Stopped) << "its worker would run on";
}

// What the user says while a worker runs, and what follows the worker's end.
TEST_F(Tasks, TheLastWordCounts) {
  using enum TransferState;
  const struct {
    const char* words;  // Pause, Resume, reDo
    TransferState after;
    bool fromNothing;
  } cases[] = {
      {"p", Stopped, false}, {"pr", Queued, false}, {"prp", Stopped, false}, {"d", Queued, true},
      {"dp", Stopped, true}, {"dpr", Queued, true}, {"r", Queued, false},
  };
  const test::TemporaryFolder folder;
  for (const auto& c : cases) {
    const TaskPointer task = store.AddDownload({"f", "/f", "server", 80}, folder.File("f"), true);
    test::WriteFile(folder.File("f"), "part");
    task->record->doneBytes = 4;
    EXPECT_EQ(queue->NextRunnableTask(), task);
    ASSERT_TRUE(task->BeginRun());
    EXPECT_FALSE(task->BeginRun()) << "a task never has two workers";
    for (const char word : std::string_view(c.words)) {
      word == 'p' ? store.Pause(task->id)
                  : void(word == 'r' ? store.Resume(task->id) : store.Redo(task->id));
    }
    EXPECT_EQ(task->record->state, *c.words == 'r' ? Queued : Stopped) << c.words;
    EXPECT_EQ(queue->NextRunnableTask(), nullptr);
    task->EndRun();
    queue->MakeReady(task->id);
    EXPECT_EQ(task->record->state, c.after) << c.words;
    EXPECT_EQ(queue->NextRunnableTask(), c.after == Queued ? task : nullptr);
    EXPECT_EQ(std::filesystem::exists(folder.File("f")), !c.fromNothing) << c.words;
    EXPECT_EQ(task->Bytes(), c.fromNothing ? 0U : 4U);
    store.RemoveTask(task->id);
  }
}

// Without a worker files go on a thread of the scheduler's; the task waits for that.
TEST_F(Tasks, FilesAreRemovedElsewhere) {
  const test::TemporaryFolder folder;
  const std::string file = folder.File("f");
  TaskPointer task = store.AddDownload({"f", "/f", "server", 80}, file, true);
  test::WriteFile(file, "part");
  task->record->doneBytes = 4;
  task->record->state = TransferState::Failed;
  EXPECT_TRUE(store.Redo(task->id));
  EXPECT_EQ(task->record->state, TransferState::Queued);
  EXPECT_EQ(task->Bytes(), 0U);
  EXPECT_TRUE(std::filesystem::exists(file));
  EXPECT_EQ(queue->NextRunnableTask(), nullptr);
  queue->EndRuns();
  EXPECT_FALSE(std::filesystem::exists(file));
  EXPECT_EQ(queue->NextRunnableTask(), task);

  test::WriteFile(file, "part");
  store.RemoveTask(task->id, TaskStore::LocalFiles::Remove);
  EXPECT_TRUE(store.IsTargetInUse(file));
  queue->EndRuns();
  EXPECT_FALSE(std::filesystem::exists(file));
  EXPECT_FALSE(store.IsTargetInUse(file));
  const std::weak_ptr<TransferTask> left = std::exchange(task, nullptr);
  EXPECT_TRUE(left.expired());
}

TEST_F(Tasks, OneAtATimeWritesATarget) {
  const auto first = AddStored(1, 0, false);
  const auto second = AddStored(2, 0, false);
  for (const auto& record : {first, second}) {
    record->SetPaths({"/remote", "/local/f"});
    record->doneBytes = 4;
  }
  std::vector<TaskId> ids;
  store.RestoreTasks([&](TaskId id) { ids.push_back(id); });
  EXPECT_EQ(first->state, TransferState::Queued);
  EXPECT_EQ(second->state, TransferState::Failed);
  EXPECT_EQ(second->systemError, static_cast<std::uint32_t>(EEXIST));
  EXPECT_EQ(first->doneBytes + second->doneBytes, 0U) << "nobody knows whose bytes are there";

  EXPECT_FALSE(store.Resume(ids[1]));
  EXPECT_FALSE(store.Redo(ids[1]));
  first->state = TransferState::Stopped;
  first->doneBytes = 4;
  EXPECT_TRUE(store.Resume(ids[1]));
  EXPECT_EQ(first->doneBytes, 0U);
  EXPECT_FALSE(store.Resume(ids[0]));
}

TEST_F(Tasks, TheUsersGoBeforeHeaders) {
  Add("/paused")->record->state = TransferState::Stopped;
  const TaskPointer first = Add("/header", false);
  const TaskPointer second = Add("/header2", false);
  const TaskPointer user = Add("/user");
  for (const TaskPointer& next : {user, first, second}) {
    EXPECT_EQ(queue->NextRunnableTask(), next);
    next->record->state = TransferState::Finished;
    EXPECT_EQ(queue->NextRunnableTask(false), nullptr);
  }
}

TEST_F(Tasks, ATargetIsInUseUntilItsWorkerHasEnded) {
  const TaskPointer task = Add("/x");
  task->BeginRun();
  store.RemoveTask(task->id);
  EXPECT_TRUE(task->Run()->Stopping());
  EXPECT_TRUE(store.IsTargetInUse("/local"));
  EXPECT_FALSE(store.IsTargetInUse("/local/inside"));
  task->EndRun();
  EXPECT_FALSE(store.IsTargetInUse("/local"));
}

// Each of 20,000 headers, and of as many tasks of the user's, costs what each of 2,500 does:
// adding, choosing, removing from the front, and what the window asks meanwhile.
TEST_F(Tasks, CostsDoNotGrowWithTheirNumber) {
  const auto cost = [this](int count, bool keep) {
    std::vector<TaskId> ids;
    const auto begun = std::clock();
    for (int i = 0; i < count; ++i) {
      const std::string name = std::to_string(i).insert(0, 1, '/');
      ids.push_back(store.AddDownload({"x", name, "server", 80}, name, keep)->id);
      if (!keep) {
        store.StreamLimitReached();
        store.IsTargetInUse("/x");
        store.FollowRename("/x", "/y");
      }
    }
    for (const TaskId id : ids) {
      EXPECT_EQ(queue->NextRunnableTask()->id, id);
      store.NextRecordId();
      store.RemoveTask(id);
    }
    return static_cast<double>(std::clock() - begun) / count;
  };
  for (const bool keep : {false, true}) {
    double best = 1e9;
    for (int attempt = 0; attempt < 3 && best > 3; ++attempt) {
      cost(2500, keep);  // warms up
      const double few = cost(2500, keep);
      best = std::min(best, cost(20000, keep) / few);
    }
    EXPECT_LT(best, 3) << "a walk over all of them would cost eight times as much for each";
  }
}

TEST_F(Tasks, StopReachesRunningTasksAlone) {
  using enum TransferState;
  const TaskPointer waiting = Add("/waiting");
  const TaskPointer running = Add("/running");
  const TaskPointer failed = Add("/failed");
  running->BeginRun();
  failed->BeginRun();
  failed->record->state = Failed;
  queue->StopRunningTasks();
  EXPECT_EQ(waiting->record->state, Queued);
  EXPECT_EQ(running->record->state, Stopped);
  EXPECT_EQ(failed->record->state, Failed);
}

}  // namespace
}  // namespace updown
