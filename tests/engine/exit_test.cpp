#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include "platform/folders.h"
#include "platform/unique_fd.h"
#include "service/messages.h"
#include "tests/engine/engine_world.h"

namespace updown {
namespace {

using peer::Fault;
using test::EngineWorld;
using test::Pattern;
using test::WriteFile;

constexpr std::uint32_t kRelayResolve = 1;

// The exit comes while a worker is blocked, at the message that the fault holds up for ever.
void ExpectExitFrom(std::uint32_t stalled) {
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

TEST(Exit, WhileTheServiceIsSilent) {
  for (const std::uint32_t stalled :
       {kRelayResolve, message::kAttachSession, message::kFileInformation, message::kReadBlock}) {
    ExpectExitFrom(stalled);
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

// A listener whose queue is full leaves further connects without an answer.
TEST(Exit, InAConnect) {
  EngineWorld world;
  const UniqueFd listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  ASSERT_EQ(bind(listener.Get(), reinterpret_cast<sockaddr*>(&address), size), 0);
  ASSERT_EQ(listen(listener.Get(), 0), 0);
  getsockname(listener.Get(), reinterpret_cast<sockaddr*>(&address), &size);
  std::vector<UniqueFd> fillers;
  for (int i = 0; i < 4; ++i) {
    fillers.emplace_back(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    (void)connect(fillers.back().Get(), reinterpret_cast<sockaddr*>(&address), size);
  }
  const test::ScopedEnvironment silent(
      {{"B99242F1C55F489fA98402890C4AA428", std::to_string(ntohs(address.sin_port))}});
  const TaskPointer task = world.Fetch("f");
  world.Start();
  ASSERT_TRUE(world.pump.RunUntil([&] { return world.started.size() == 1; }));
  EXPECT_TRUE(task->Running()) << "the connect was answered";
  EXPECT_TRUE(world.End());
}

TEST(Exit, WhileAWorkerWaitsForItsListing) {
  EngineWorld world;
  StoredRecord stored;
  stored.recordId = 1;
  stored.isFolder = 1;
  stored.paths = {"/", world.local.File("tree")};
  world.store->Records().Append(std::make_shared<TransferRecord>(stored));
  world.Restore();
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
  peer::Options options;
  options.blockLength = 512;
  EngineWorld world(options);
  WriteFile(world.served.File("f"), Pattern(20000));
  world.context->pace = std::chrono::milliseconds(0);
  for (unsigned round = 0; round < 200; ++round) {
    auto context = std::make_shared<SchedulerContext>();
    context->queue = std::make_shared<TaskQueue>();
    context->service = &world.service;
    context->pace = std::chrono::milliseconds(round % 2);
    world.context = context;
    world.store.emplace(context->queue, world.launch);
    Scheduler scheduler(context);
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
    world.store->DropUnkeptRecords();
    ASSERT_TRUE(scheduler.Stop(std::chrono::seconds(2))) << round;
    for (const TaskPointer& task : tasks) {
      ASSERT_FALSE(task->WorkerActive()) << round;
    }
    context->queue->Clear();
    world.outcomes.clear();
  }
}

}  // namespace
}  // namespace updown
