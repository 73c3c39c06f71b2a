#include <gmock/gmock.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "engine/scheduler.h"
#include "service/limits.h"
#include "service/messages.h"
#include "service/result_codes.h"
#include "tests/engine/engine_world.h"

namespace updown {
namespace {

using Kind = peer::Fault::Kind;
using test::Dialect;
using test::EngineWorld;
using test::Pattern;
using test::ReadFile;

constexpr std::chrono::hours kForEver{1};
constexpr std::chrono::milliseconds kShortSilence{150};

std::ptrdiff_t Entries(const char* folder) {
  return std::distance(std::filesystem::directory_iterator(folder),
                       std::filesystem::directory_iterator());
}

// Sanitizers keep what was freed.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t kMostGrowth = std::size_t{1} << 40U;
#else
constexpr std::size_t kMostGrowth = std::size_t{1} << 20U;  // half of it is seen
#endif

std::size_t ResidentBytes() {
  std::size_t size = 0;
  std::size_t resident = 0;
  std::ifstream("/proc/self/statm") >> size >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

class Workers : public ::testing::TestWithParam<int> {
 protected:
  TaskPointer Serve() { return world.ServeAndFetch(bytes); }

  EngineWorld world{Dialect(GetParam())};
  const std::string bytes = Pattern(40000);  // ten blocks
};

TEST_P(Workers, AForgottenSessionIsRenewedOnceForAll) {
  std::vector<TaskPointer> tasks;
  for (const char* name : {"a", "b", "c", "d", "e"}) {
    test::WriteFile(world.served.File(name), bytes);
    tasks.push_back(world.Fetch(name));
  }
  world.peer.ForgetSessions();
  world.peer.ForgetRequests();
  world.Start();
  for (const TaskPointer& task : tasks) {
    EXPECT_TRUE(world.WaitForState(*task, TransferState::Finished));
  }
  EXPECT_EQ(world.session.Key().grant, 2U);

  // Refused with the new one too.
  world.peer.AddFault({Kind::WrongCode, message::kAttachSession, 0, 0, 0x8006});
  world.store->Redo(tasks[0]->id);
  EXPECT_TRUE(world.WaitForState(*tasks[0], TransferState::Failed));
  EXPECT_EQ(world.told->last.code, result::kAuthentication);
  EXPECT_EQ(world.session.Key().grant, 3U);
}

TEST_P(Workers, FaultsEndAsTheyShouldAndLeaveNothingBehind) {
  const int offsets = GetParam() == 1 ? result::kOk : result::kNotDecodable;  // told in dialect 2
  const struct {
    peer::Fault fault;
    int waits, code;
  } cases[] = {
      {{Kind::DropBefore, message::kReadBlock, 0, 1}, 0, result::kConnection},
      {{Kind::DropBefore, message::kAttachSession, 0, 1}, 0, result::kConnection},
      {{Kind::DropAfter, message::kReadBlock, 0, 1}, 1, result::kOk},
      {{Kind::DropBefore, message::kReadBlock, 3, 2}, 2, result::kOk},
      {{Kind::DropInside, message::kReadBlock, 3, 3}, 2, result::kConnection},
      {{Kind::DropAfter, message::kReadBlock, 1, 6}, 6, result::kOk},
      {{Kind::EmptyBlock, message::kReadBlock, 3, 1}, 0, result::kNotDecodable},
      {{Kind::BadList, message::kFileInformation, 0, 1}, 0, result::kNotDecodable},
      {{Kind::LongBlock, message::kReadBlock, 9, 1, 100000}, 0, result::kNotDecodable},
      {{Kind::WrongOffset, message::kReadBlock, 3, 1, 1}, 0, offsets},
      {{Kind::WrongOffset, message::kReadBlock, 3, 1, 0xFFFFF000}, 0, offsets},
      // Silence; told apart from a drop, and seen in the first round alone, since it takes its
      // time.
      {{Kind::Stall, message::kAttachSession, 0, 1}, 0, result::kConnection},
      {{Kind::Stall, message::kFileInformation, 0, 1}, 0, result::kConnection},
      {{Kind::Stall, message::kReadBlock, 0, 1}, 0, result::kConnection},
      {{Kind::Stall, message::kReadBlock, 3, 1}, 1, result::kOk},
      {{Kind::Stall, message::kReadBlock, 3, 3}, 2, result::kConnection},
  };
  const TaskPointer task = Serve();
  world.Start();
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Finished));
  const auto descriptors = Entries("/proc/self/fd");
  const auto threads = Entries("/proc/self/task");
  std::size_t memory = 0;
  for (int round = 0; round < 20; ++round) {
    world.peer.ForgetRequests();
    memory = round == 2 ? ResidentBytes() : memory;  // warm by then
    for (const auto& [fault, waits, code] : cases) {
      const bool silent = fault.kind == Kind::Stall;
      if (silent && round > 0) {
        continue;
      }
      world.context->silence = silent ? kShortSilence : kTransferSilence;
      world.told->waits = 0;
      world.peer.AddFault(fault);
      world.store->Redo(task->id);
      const bool good = code == result::kOk;
      ASSERT_TRUE(
          world.WaitForState(*task, good ? TransferState::Finished : TransferState::Failed));
      EXPECT_EQ(world.told->waits, waits) << fault.skip << ' ' << fault.times;
      EXPECT_EQ(world.told->last.code, code);
      EXPECT_EQ(task->record->systemError, code != result::kConnection ? 0
                                           : silent                    ? ETIMEDOUT
                                                                       : ECONNRESET);
      world.peer.ClearFaults();
      world.context->silence = kTransferSilence;
      if (!good) {
        world.store->Resume(task->id);
        ASSERT_TRUE(world.WaitForState(*task, TransferState::Finished));
      }
      ASSERT_TRUE(ReadFile(world.local.File("f")) == bytes);
    }
  }
  world.peer.ForgetRequests();
  EXPECT_LT(ResidentBytes(), memory + kMostGrowth);
  EXPECT_TRUE(world.told->Until([&] {
    return Entries("/proc/self/fd") <= descriptors && Entries("/proc/self/task") <= threads;
  })) << Entries("/proc/self/fd")
      << " of " << descriptors << ", " << Entries("/proc/self/task") << " of " << threads;
}

// Wherever a worker waits, Redo and Delete end it, and nothing of it stays.
TEST_P(Workers, EndWhenTheyAreTold) {
  world.Start();
  for (const std::uint32_t stalled :
       {message::kAttachSession, message::kFileInformation, message::kReadBlock}) {
    SCOPED_TRACE(stalled);
    world.Silence(stalled);
    TaskPointer task = Serve();
    ASSERT_TRUE(world.WaitForSilence(stalled));
    world.store->Redo(task->id);
    ASSERT_TRUE(world.WaitForState(*task, TransferState::Finished));
    EXPECT_TRUE(ReadFile(world.local.File("f")) == bytes);

    world.Silence(stalled);
    world.store->Redo(task->id);
    ASSERT_TRUE(world.WaitForSilence(stalled));
    world.store->RemoveTask(task->id, TaskStore::LocalFiles::Remove);
    const std::weak_ptr<TransferTask> left = std::exchange(task, nullptr);
    ASSERT_TRUE(world.told->Until([&] { return left.expired(); }));
    EXPECT_FALSE(std::filesystem::exists(world.local.File("f")));
  }
}

TEST_P(Workers, APauseEndsEveryWaitAndLeavesNoResult) {
  const TaskPointer task = Serve();
  // Before a new connection, then in a block.
  world.context->reconnectDelays = {kForEver};
  world.peer.AddFault({Kind::DropBefore, message::kReadBlock, 2, 1});
  world.Start();
  ASSERT_TRUE(world.told->Until([&] { return world.told->waits == 1; }));
  world.store->Pause(task->id);
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Stopped));
  EXPECT_EQ(world.told->last.code, result::kOk);
  EXPECT_EQ(task->record->resultCode, 0U);

  world.peer.ForgetRequests();
  world.peer.AddFault({Kind::Stall, message::kReadBlock, 1, 0});
  world.store->Resume(task->id);
  ASSERT_TRUE(world.told->Until([&] { return world.Count(message::kReadBlock) == 2; }));
  const auto paused = std::chrono::steady_clock::now();
  world.store->Pause(task->id);
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Stopped));
  const auto waited = std::chrono::steady_clock::now() - paused;
  EXPECT_GE(waited, TaskRun::kBlockInHand - std::chrono::milliseconds(10));
  EXPECT_LT(waited, TaskRun::kBlockInHand + std::chrono::seconds(3));
  EXPECT_EQ(task->record->resultCode, 0U);
}

INSTANTIATE_TEST_SUITE_P(Dialects, Workers, ::testing::Values(1, 2));

TEST(WorkerPace, CountsFromRequestToRequestAndWaitsBehindNoLastBlock) {
  constexpr std::chrono::milliseconds kPace{60};
  EngineWorld world(Dialect(1));
  world.context->pace = kPace;
  const auto begun = std::chrono::steady_clock::now();
  world.Start();
  ASSERT_TRUE(world.WaitForState(*world.ServeAndFetch(Pattern(4 * 4096)), TransferState::Finished));
  EXPECT_GE(std::chrono::steady_clock::now() - begun, 3 * kPace);
  world.context->pace = kForEver;
  EXPECT_TRUE(world.WaitForState(*world.ServeAndFetch(Pattern(4096)), TransferState::Finished));
}

TEST(WorkerOrder, HeadersLeaveTwoWorkersToTheUser) {
  EngineWorld world(Dialect(1));
  world.peer.AddFault({Kind::Stall, message::kFileInformation, 0, 8});
  for (int i = 0; i < 12; ++i) {
    world.Fetch("header" + std::to_string(i), false);
  }
  world.Start();
  ASSERT_TRUE(world.told->Until([&] { return world.Count(message::kFileInformation) == 8; }));
  EXPECT_TRUE(world.WaitForState(*world.ServeAndFetch("bytes"), TransferState::Finished));
  EXPECT_EQ(world.Count(message::kFileInformation), 9);
}

TEST(WorkerOrder, NothingStartsBeforeASessionWasGranted) {
  EngineWorld world(Dialect(1));
  Session session{world.service, world.launch, [](const std::function<void()>&) {}, nullptr,
                  [&] { world.context->schedulerWake.Set(); }};
  world.context->session = &session;
  const TaskPointer task = world.ServeAndFetch("bytes");
  world.Start();
  EXPECT_FALSE(world.told->Until([&] { return task->Running(); }, std::chrono::milliseconds(50)));
  session.Open(AskedBy::Program, [](const SessionResult&) {});
  EXPECT_TRUE(world.WaitForState(*task, TransferState::Finished));
  world.End();
}

}  // namespace
}  // namespace updown
