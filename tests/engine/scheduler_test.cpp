#include "engine/scheduler.h"

#include <gmock/gmock.h>

#include "service/messages.h"
#include "tests/engine/engine_world.h"

namespace updown {
namespace {

using test::EngineWorld;
using test::Pattern;
using test::ReadFile;
using test::WriteFile;

peer::Options Dialect(int dialect, std::uint32_t blockLength = 4096) {
  peer::Options options;
  options.dialect = dialect;
  options.blockLength = blockLength;
  return options;
}

class Transfers : public testing::TestWithParam<int> {};

TEST_P(Transfers, StatesBeforeAndAfter) {
  struct Case {
    const char* name;
    TransferState before;
    TransferState after;
  };
  constexpr auto kForeign = static_cast<TransferState>(77);
  const Case cases[] = {
      {"stopped", TransferState::Stopped, TransferState::Stopped},
      {"good", TransferState::Queued, TransferState::Finished},
      {"failed", TransferState::Failed, TransferState::Failed},
      {"missing", TransferState::Queued, TransferState::Failed},
      {"foreign", kForeign, kForeign},
      {"also good", TransferState::Queued, TransferState::Finished},
  };
  EngineWorld world(Dialect(GetParam()));
  std::vector<TaskPointer> tasks;
  for (const Case& c : cases) {
    if (std::string(c.name) != "missing") {
      WriteFile(world.served.File(c.name), Pattern(10000));
    }
    tasks.push_back(world.Fetch(c.name));
    tasks.back()->record->state = c.before;
  }
  world.Start();
  EXPECT_TRUE(world.pump.RunUntil([&] { return world.outcomes.size() == 3; }));
  EXPECT_TRUE(world.End());
  EXPECT_THAT(world.started, testing::ElementsAre(tasks[1]->id, tasks[3]->id, tasks[5]->id));
  for (std::size_t i = 0; i < tasks.size(); ++i) {
    EXPECT_EQ(tasks[i]->record->state, cases[i].after) << cases[i].name;
    EXPECT_FALSE(tasks[i]->Running());
  }
  EXPECT_EQ(ReadFile(world.local.File("good")), Pattern(10000));
}

TEST_P(Transfers, PauseResumeRedo) {
  EngineWorld world(Dialect(GetParam()));
  const std::string bytes = Pattern(400000);
  WriteFile(world.served.File("f"), bytes);
  const TaskPointer task = world.Fetch("f");
  TransferRecord& record = *task->record;
  world.Start();
  ASSERT_TRUE(world.pump.RunUntil([&] { return record.doneBytes > 0; }));
  record.ChangeState(TransferState::Queued, TransferState::Stopped);
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Stopped));
  const std::uint32_t paused = record.doneBytes;
  EXPECT_LT(paused, bytes.size());
  EXPECT_EQ(ReadFile(world.local.File("f")), bytes.substr(0, paused));

  world.peer.ForgetRequests();
  world.Run(task);
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Finished));
  EXPECT_EQ(world.Count(message::kReadBlock), (bytes.size() - paused + 4095) / 4096);
  EXPECT_EQ(ReadFile(world.local.File("f")), bytes);

  record.totalBytes = record.doneBytes = record.remoteTime = 0;
  std::filesystem::remove(world.local.File("f"));
  world.Run(task);
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Finished));
  EXPECT_EQ(ReadFile(world.local.File("f")), bytes);
}

TEST_P(Transfers, ARefusedSessionIsReportedAndANewOneGoesOn) {
  EngineWorld world(Dialect(GetParam()));
  WriteFile(world.served.File("f"), "bytes");
  world.peer.ForgetSessions();
  const TaskPointer task = world.Fetch("f");
  world.Start();
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Failed));
  EXPECT_TRUE(world.pump.RunUntil([&] { return world.outcomes.size() == 1; }));
  EXPECT_EQ(world.outcomes[0].second, result::kAuthentication);
  world.session.Close();
  ASSERT_TRUE(world.session.OpenSharedSession().open);
  task->SetSessid(world.session.Sessid());
  world.Run(task);
  EXPECT_TRUE(world.WaitForState(*task, TransferState::Finished));
}

TEST_P(Transfers, DeletedTasksEndAndAreFreed) {
  EngineWorld world(Dialect(GetParam()));
  WriteFile(world.served.File("f"), Pattern(4000000));
  std::vector<std::weak_ptr<TransferTask>> deleted;
  world.Start();
  for (int i = 0; i < 4; ++i) {
    const TaskPointer task = world.Fetch("f");
    ASSERT_TRUE(world.pump.RunUntil([&] { return task->record->doneBytes > 0; }));
    world.store->RemoveTask(task->id);
    EXPECT_EQ(world.store->Find(task->id), nullptr);
    deleted.push_back(task);
  }
  EXPECT_TRUE(world.pump.RunUntil([&] {
    return std::all_of(deleted.begin(), deleted.end(), [](const auto& t) { return t.expired(); });
  }));
  EXPECT_TRUE(world.store->Records().Empty());
}

INSTANTIATE_TEST_SUITE_P(Dialects, Transfers, testing::Values(1, 2));

// Threads whose bodies wait until the test lets them go.
class HeldThreads {
 public:
  ThreadStarter Starter() {
    return [this](std::function<void()> body) {
      const auto gate = std::make_shared<Event>();
      {
        const std::lock_guard lock(mutex_);
        gates_.push_back(gate);
      }
      return Thread::Start([gate, body = std::move(body)] {
        gate->WaitFor(std::chrono::seconds(30));
        body();
      });
    };
  }
  std::size_t Count() const {
    const std::lock_guard lock(mutex_);
    return gates_.size();
  }
  void LetGo(std::size_t index) {
    const std::lock_guard lock(mutex_);
    gates_[index]->Set();
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::shared_ptr<Event>> gates_;
};

TEST(Scheduler, TenRunTwoWaitInQueueOrder) {
  EngineWorld world(Dialect(1));
  HeldThreads held;
  world.context->startThread = held.Starter();
  WriteFile(world.served.File("f"), "bytes");
  std::vector<TaskPointer> tasks;
  std::vector<TaskId> ids;
  for (int i = 0; i < 12; ++i) {
    tasks.push_back(world.Fetch("f"));
    ids.push_back(tasks.back()->id);
  }
  world.Start();
  ASSERT_TRUE(world.pump.RunUntil([&] { return held.Count() == 10; }));
  EXPECT_TRUE(tasks[9]->Running());
  EXPECT_FALSE(tasks[10]->Running() || tasks[11]->Running());
  held.LetGo(4);
  ASSERT_TRUE(world.pump.RunUntil([&] { return held.Count() == 11; }));
  EXPECT_TRUE(tasks[10]->Running() && !tasks[11]->Running());
  held.LetGo(7);
  ASSERT_TRUE(world.pump.RunUntil([&] { return held.Count() == 12; }));
  for (std::size_t i = 0; i < 12; ++i) {
    held.LetGo(i);
  }
  EXPECT_TRUE(world.pump.RunUntil([&] { return world.outcomes.size() == 12; }));
  EXPECT_EQ(world.started, ids);
}

TEST(Scheduler, AThreadThatIsRefusedLeavesTheTaskForTheNextPass) {
  EngineWorld world(Dialect(1));
  WriteFile(world.served.File("f"), "bytes");
  std::atomic<int> calls{0};
  world.context->startThread = [&calls](std::function<void()> body) {
    if (++calls == 2) {
      throw std::bad_alloc();
    }
    return calls < 3 ? nullptr : Thread::Start(std::move(body));
  };
  const TaskPointer task = world.Fetch("f");
  world.Start();
  for (int refused = 1; refused <= 2; ++refused) {
    ASSERT_TRUE(world.pump.RunUntil([&] { return calls == refused && !task->Running(); }));
    EXPECT_EQ(task->record->state, TransferState::Queued);
    EXPECT_TRUE(world.started.empty());
    world.context->schedulerWake.Set();
  }
  EXPECT_TRUE(world.WaitForState(*task, TransferState::Finished));
}

}  // namespace
}  // namespace updown
