#include "engine/scheduler.h"

#include <gmock/gmock.h>

#include "service/messages.h"
#include "service/transfer.h"
#include "tests/engine/engine_world.h"

namespace updown {
namespace {

using test::Dialect;
using test::EngineWorld;
using test::Pattern;
using test::ReadFile;
using test::WriteFile;

constexpr std::chrono::seconds kLong{30};

class Transfers : public ::testing::TestWithParam<int> {};

TEST_P(Transfers, StatesBeforeAndAfter) {
  constexpr auto kForeign = static_cast<TransferState>(77);
  const std::tuple<const char*, TransferState, TransferState> cases[] = {
      {"stopped", TransferState::Stopped, TransferState::Stopped},
      {"good", TransferState::Queued, TransferState::Finished},
      {"failed", TransferState::Failed, TransferState::Failed},
      {"missing", TransferState::Queued, TransferState::Failed},
      {"foreign", kForeign, kForeign},
      {"also good", TransferState::Queued, TransferState::Finished},
  };
  EngineWorld world(Dialect(GetParam()));
  std::vector<TaskPointer> tasks;
  for (const auto& [name, before, after] : cases) {
    WriteFile(world.served.File(name), Pattern(10000));
    tasks.push_back(world.Fetch(name));
    tasks.back()->record->state = before;
  }
  std::filesystem::remove(world.served.File("missing"));
  world.Start();
  EXPECT_TRUE(world.told->Until([&] { return world.told->outcomes.size() == 3; }));
  EXPECT_TRUE(world.End());
  EXPECT_THAT(world.told->started,
              ::testing::ElementsAre(tasks[1]->id, tasks[3]->id, tasks[5]->id));
  for (std::size_t i = 0; i < tasks.size(); ++i) {
    EXPECT_EQ(tasks[i]->record->state, std::get<2>(cases[i])) << std::get<0>(cases[i]);
  }
  EXPECT_EQ(ReadFile(world.local.File("good")), Pattern(10000));
}

INSTANTIATE_TEST_SUITE_P(Dialects, Transfers, ::testing::Values(1, 2));

TEST(Scheduler, TenRunTwoWaitInQueueOrder) {
  std::array<Event, 12> gates;
  std::array<const Event*, 12> ended{};
  std::atomic<std::size_t> count{0};
  EngineWorld world(Dialect(1));
  world.context->startThread = [&](std::function<void()> body) {
    const std::size_t index = count;
    auto thread = Thread::Start([&gate = gates.at(index), body = std::move(body)] {
      gate.WaitFor(kLong);
      body();
    });
    ended.at(index) = &thread->Ended();
    if (index == 10) {  // a worker that ends while another is being started is not overlooked
      gates[7].Set();
      ended[7]->WaitFor(kLong);
    }
    ++count;
    return thread;
  };
  WriteFile(world.served.File("f"), "bytes");
  std::vector<TaskPointer> tasks;
  for (std::size_t i = 0; i < gates.size(); ++i) {
    tasks.push_back(world.Fetch("f"));
  }
  world.Start();
  ASSERT_TRUE(world.told->Until([&] { return count == 10; }));
  EXPECT_TRUE(tasks[9]->Running() && !tasks[10]->Running() && !tasks[11]->Running());
  gates[4].Set();
  ASSERT_TRUE(world.told->Until([&] { return count == 12; }));
  for (Event& gate : gates) {
    gate.Set();
  }
  EXPECT_TRUE(world.told->Until([&] { return world.told->outcomes.size() == 12; }));
  EXPECT_TRUE(std::ranges::equal(tasks, world.told->started, {}, &TransferTask::id));
}

TEST(Scheduler, AThreadThatIsRefusedLeavesTheTaskForTheNextPass) {
  EngineWorld world(Dialect(1));
  WriteFile(world.served.File("f"), "bytes");
  std::atomic<int> calls{0};
  world.context->startThread = [&calls](std::function<void()> body) {
    return ++calls < 3 ? nullptr : Thread::Start(std::move(body));
  };
  const TaskPointer task = world.Fetch("f");
  world.Start();
  for (int refused = 1; refused <= 2; ++refused) {
    ASSERT_TRUE(world.told->Until([&] { return calls == refused && !task->Running(); }));
    EXPECT_EQ(task->record->state, TransferState::Queued);
    EXPECT_TRUE(world.told->started.empty());
    world.context->schedulerWake.Set();
  }
  EXPECT_TRUE(world.WaitForState(*task, TransferState::Finished));
}

// Memory that runs out in the middle of a transfer.
TEST(Scheduler, ATransferWithoutMemoryFailsAndClosesItsConnection) {
  struct : TransferProgress {
    void BlockDone(TransferRecord& /*record*/) override { throw std::bad_alloc(); }
  } progress;
  EngineWorld world(Dialect(1));
  WriteFile(world.served.File("f"), Pattern(10000));
  TransferRecord record;
  record.SetPaths({"/f", world.local.File("f")});
  const TransferResult ended =
      RunTaskTransfer(world.service, "fileservice", 8080, world.session.Key().sessid, record,
                      &progress, &world.context->connections);
  EXPECT_EQ(ended.code, result::kNotEncodable);
  EXPECT_EQ(ended.systemError, ENOMEM);
  EXPECT_EQ(record.state, TransferState::Failed);
  EXPECT_TRUE(world.told->Until([&] { return world.peer.OpenConnections() == 1; }));
}

}  // namespace
}  // namespace updown
