#include "engine/scheduler.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>

#include "tests/engine/engine_world.h"

namespace updown {
namespace {

using test::Dialect;
using test::EngineWorld;

constexpr std::chrono::seconds kLong{30};

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
  std::vector<TaskPointer> tasks;
  for (std::size_t i = 0; i < gates.size(); ++i) {
    tasks.push_back(world.ServeAndFetch("bytes"));
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
  std::atomic<int> calls{0};
  world.context->startThread = [&calls](std::function<void()> body) {
    return ++calls < 3 ? nullptr : Thread::Start(std::move(body));
  };
  const TaskPointer task = world.ServeAndFetch("bytes");
  world.Start();
  for (int refused = 1; refused <= 2; ++refused) {
    ASSERT_TRUE(world.told->Until([&] { return calls == refused && !task->Running(); }));
    EXPECT_EQ(task->record->state, TransferState::Queued);
    EXPECT_TRUE(world.told->started.empty());
    world.context->schedulerWake.Set();
  }
  EXPECT_TRUE(world.WaitForState(*task, TransferState::Finished));
}

}  // namespace
}  // namespace updown
