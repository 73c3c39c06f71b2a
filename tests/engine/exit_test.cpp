#include <gtest/gtest.h>

#include "platform/environment.h"
#include "service/messages.h"
#include "tests/engine/engine_world.h"
#include "tests/wire/loopback.h"

namespace updown {
namespace {

using test::EngineWorld;
using test::Pattern;

constexpr std::uint32_t kRelayResolve = 1;

// The exit comes while a worker is blocked, at the message that the fault holds up for ever.
TEST(Exit, WhileTheServiceIsSilent) {
  for (const std::uint32_t stalled :
       {kRelayResolve, message::kAttachSession, message::kFileInformation, message::kReadBlock}) {
    EngineWorld world;
    world.Silence(stalled);
    const TaskPointer task = world.ServeAndFetch(Pattern(100000));
    world.Start();
    ASSERT_TRUE(world.WaitForSilence(stalled)) << stalled;
    EXPECT_TRUE(world.End()) << stalled;
    EXPECT_FALSE(task->Running());
  }
}

TEST(Exit, InThePaceBehindABlock) {
  EngineWorld world;
  world.context->pace = std::chrono::seconds(60);
  const TaskPointer task = world.ServeAndFetch(Pattern(100000));
  world.Start();
  ASSERT_TRUE(world.told->Until([&] { return task->record->doneBytes > 0; }));
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
  ASSERT_TRUE(world.told->Until([&] { return silent.KeepsWaiting(); }));
  EXPECT_TRUE(world.End());
}

// A listing that nobody makes any more is no failure of the folder's: it goes on at the next start.
TEST(Exit, LeavesAFolderThatCouldNotBeListedQueued) {
  EngineWorld world;
  world.session.Stop(std::chrono::seconds(2));
  const TaskPointer task = world.FetchFolder("pkg");
  world.Start();
  EXPECT_TRUE(world.told->Until([&] { return !world.told->outcomes.empty(); }));
  EXPECT_TRUE(world.End());
  EXPECT_NE(task->record->state, TransferState::Failed);
}

// Ten workers under pauses, resumes, deletes and new tasks, cut short at any moment.
TEST(Exit, ManyStartsAndEnds) {
  EngineWorld world(test::Dialect(1, 512));
  for (unsigned round = 0; round < 200; ++round) {
    world.Renew(std::chrono::milliseconds(round % 2));
    world.told->outcomes.clear();
    Scheduler scheduler(world.context);
    std::vector<TaskPointer> tasks;
    tasks.push_back(world.ServeAndFetch(Pattern(20000)));
    while (tasks.size() < 12) {
      tasks.push_back(world.Fetch("f", tasks.size() % 3 != 0));
    }
    for (unsigned step = 0; step < round % 16; ++step) {
      const TaskPointer& task = tasks[(round + step) % tasks.size()];
      if (step % 2 == 0) {
        world.store->Pause(task->id);
      } else if (step % 4 == 1) {
        world.store->Redo(task->id);
      } else {
        world.store->RemoveTask(task->id);
      }
      world.store->StreamLimitReached();
      task->Bytes();
    }
    if (round % 3 == 0) {
      world.told->Until([&] { return !world.told->outcomes.empty(); }, std::chrono::seconds(1));
    }
    ASSERT_TRUE(scheduler.Stop(std::chrono::seconds(2))) << round;
    ASSERT_TRUE(std::ranges::none_of(tasks, &TransferTask::Running)) << round;
  }
}

}  // namespace
}  // namespace updown
