#include <gtest/gtest.h>

#include "platform/environment.h"
#include "platform/folders.h"
#include "service/messages.h"
#include "tests/engine/engine_world.h"
#include "tests/wire/loopback.h"

namespace updown {
namespace {

using peer::Fault;
using test::EngineWorld;
using test::Pattern;
using test::WriteFile;

constexpr std::uint32_t kRelayResolve = 1;

// The exit comes while a worker is blocked, at the message that the fault holds up for ever.
TEST(Exit, WhileTheServiceIsSilent) {
  for (const std::uint32_t stalled :
       {kRelayResolve, message::kAttachSession, message::kFileInformation, message::kReadBlock}) {
    EngineWorld world;
    WriteFile(world.served.File("f"), Pattern(100000));
    world.peer.ForgetRequests();
    world.peer.AddFault({Fault::Kind::Stall, stalled, 0, 0, 0});
    const TaskPointer task = world.Fetch("f");
    world.Start();
    ASSERT_TRUE(world.pump.RunUntil([&] { return world.Count(stalled) > 0; })) << stalled;
    EXPECT_TRUE(world.End()) << stalled;
    EXPECT_FALSE(task->Running());
  }
}

TEST(Exit, InThePaceBehindABlock) {
  EngineWorld world;
  world.context->pace = std::chrono::seconds(60);
  WriteFile(world.served.File("f"), Pattern(100000));
  const TaskPointer task = world.Fetch("f");
  world.Start();
  ASSERT_TRUE(world.pump.RunUntil([&] { return task->record->doneBytes > 0; }));
  EXPECT_TRUE(world.End());
  EXPECT_EQ(task->record->state, TransferState::Stopped);
  EXPECT_EQ(task->record->doneBytes, 65536U) << "what the list holds stays true";
}

TEST(Exit, InAConnect) {
  EngineWorld world;
  const testing::SilentListener silent;
  const test::ScopedEnvironment toSilent({{kVariableRelayPort, std::to_string(silent.Port())}});
  const TaskPointer task = world.Fetch("f");
  world.Start();
  ASSERT_TRUE(world.pump.RunUntil([&] { return silent.KeepsWaiting(); }));
  EXPECT_TRUE(world.End());
}

TEST(Exit, WhileAWorkerWaitsForItsListing) {
  EngineWorld world;
  world.RestoreFolder("/", world.local.File("tree"));
  world.Start();
  // Nobody dispatches: the listing that follows the folder is never answered.
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!PathExists(world.local.File("tree")) && std::chrono::steady_clock::now() < limit) {
    std::this_thread::yield();
  }
  EXPECT_TRUE(world.End());
  EXPECT_TRUE(world.outcomes.empty());
}

// Ten workers under pauses, resumes, deletes and new tasks, cut short at any moment.
TEST(Exit, ManyStartsAndEnds) {
  EngineWorld world(test::Dialect(1, 512));
  WriteFile(world.served.File("f"), Pattern(20000));
  for (unsigned round = 0; round < 200; ++round) {
    world.context = std::make_shared<SchedulerContext>();
    world.context->queue = std::make_shared<TaskQueue>();
    world.context->service = &world.service;
    world.context->pace = std::chrono::milliseconds(round % 2);
    world.store.emplace(world.context->queue, world.launch);
    world.outcomes.clear();
    Scheduler scheduler(world.context);
    std::vector<TaskPointer> tasks;
    for (unsigned i = 0; i < 12; ++i) {
      tasks.push_back(world.Fetch("f", i % 3 != 0));
    }
    for (unsigned step = 0; step < round % 16; ++step) {
      const TaskPointer& task = tasks[(round + step) % tasks.size()];
      if (step % 4 == 3) {
        world.store->RemoveTask(task->id);
      } else if (!task->record->ChangeState(TransferState::Queued, TransferState::Stopped)) {
        world.Run(task);
      }
      world.pump.RunUntil([] { return true; });
      world.store->StreamLimitReached();
      task->Bytes();
    }
    if (round % 3 == 0) {
      world.pump.RunUntil([&] { return !world.outcomes.empty(); }, std::chrono::seconds(1));
    }
    ASSERT_TRUE(scheduler.Stop(std::chrono::seconds(2))) << round;
    for (const TaskPointer& task : tasks) {
      ASSERT_FALSE(task->WorkerActive()) << round;
    }
  }
}

}  // namespace
}  // namespace updown
