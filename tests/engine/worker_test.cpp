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

using peer::Fault;
using test::Dialect;
using test::EngineWorld;
using test::Pattern;
using test::ReadFile;
using test::WriteFile;

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
  TaskPointer Serve() {
    WriteFile(world.served.File("f"), bytes);
    return world.Fetch("f");
  }
  void Fault(Fault::Kind kind, std::uint32_t message, std::uint32_t skip, std::uint32_t times,
             std::uint32_t code = 0) {
    world.peer.AddFault({kind, message, skip, times, code});
  }

  EngineWorld world{Dialect(GetParam())};
  const std::string bytes = Pattern(40000);  // ten blocks
};

TEST_P(Workers, AForgottenSessionIsRenewedOnceForAll) {
  std::vector<TaskPointer> tasks;
  for (int i = 0; i < 5; ++i) {
    tasks.push_back(Serve());
  }
  world.peer.ForgetSessions();
  world.peer.ForgetRequests();
  world.Start();
  for (const TaskPointer& task : tasks) {
    EXPECT_TRUE(world.WaitForState(*task, TransferState::Finished));
  }
  EXPECT_EQ(world.session.Key().grant, 2U);

  // Refused with the new one too.
  world.told->outcomes.clear();
  Fault(Fault::Kind::WrongCode, message::kAttachSession, 0, 0, 0x8006);
  world.Redo(tasks[0]);
  EXPECT_TRUE(world.told->Until([&] { return !world.told->outcomes.empty(); }));
  EXPECT_TRUE(world.WaitForState(*tasks[0], TransferState::Failed));
  EXPECT_EQ(world.told->last.code, result::kAuthentication);
  EXPECT_EQ(world.session.Key().grant, 3U);
}

TEST_P(Workers, FaultsEndAsTheyShouldAndLeaveNothingBehind) {
  using FaultKind = Fault::Kind;
  const int offsets = GetParam() == 1 ? result::kOk : result::kNotDecodable;  // told in dialect 2
  const struct {
    FaultKind kind;
    std::uint32_t message, skip, times;
    int waits;
    int code;
    std::uint32_t by = 0;
  } cases[] = {
      {FaultKind::DropBefore, message::kReadBlock, 0, 1, 0, result::kConnection},
      {FaultKind::DropBefore, message::kAttachSession, 0, 1, 0, result::kConnection},
      {FaultKind::DropAfter, message::kReadBlock, 0, 1, 1, result::kOk},
      {FaultKind::DropBefore, message::kReadBlock, 3, 2, 2, result::kOk},
      {FaultKind::DropInside, message::kReadBlock, 3, 3, 2, result::kConnection},
      {FaultKind::DropAfter, message::kReadBlock, 1, 6, 6, result::kOk},
      {FaultKind::EmptyBlock, message::kReadBlock, 3, 1, 0, result::kNotDecodable},
      {FaultKind::BadList, message::kFileInformation, 0, 1, 0, result::kNotDecodable},
      {FaultKind::LongBlock, message::kReadBlock, 9, 1, 0, result::kNotDecodable, 100000},
      {FaultKind::WrongOffset, message::kReadBlock, 3, 1, 0, offsets, 1},
      {FaultKind::WrongOffset, message::kReadBlock, 3, 1, 0, offsets, 0xFFFFF000},
      // Silence; told apart from a drop, and seen in the first round alone, since it takes its
      // time.
      {FaultKind::Stall, message::kAttachSession, 0, 1, 0, result::kConnection},
      {FaultKind::Stall, message::kFileInformation, 0, 1, 0, result::kConnection},
      {FaultKind::Stall, message::kReadBlock, 0, 1, 0, result::kConnection},
      {FaultKind::Stall, message::kReadBlock, 3, 1, 1, result::kOk},
      {FaultKind::Stall, message::kReadBlock, 3, 3, 2, result::kConnection},
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
    for (const auto& c : cases) {
      const bool silent = c.kind == FaultKind::Stall;
      if (silent && round > 0) {
        continue;
      }
      world.context->silence = silent ? kShortSilence : kTransferSilence;
      world.told->Until([&] {
        world.told->outcomes.clear();
        world.told->waits = 0;
        return true;
      });
      Fault(c.kind, c.message, c.skip, c.times, c.by);
      world.Redo(task);
      ASSERT_TRUE(world.told->Until([&] { return !world.told->outcomes.empty(); }));
      const bool good = c.code == result::kOk;
      ASSERT_TRUE(
          world.WaitForState(*task, good ? TransferState::Finished : TransferState::Failed));
      EXPECT_EQ(world.told->waits, c.waits) << c.skip << ' ' << c.times;
      EXPECT_EQ(world.told->last.code, c.code);
      EXPECT_EQ(task->record->systemError, c.code != result::kConnection ? 0
                                           : silent                      ? ETIMEDOUT
                                                                         : ECONNRESET);
      world.peer.ClearFaults();
      world.context->silence = kTransferSilence;
      if (!good) {
        world.Run(task);
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

// Wherever a worker waits, Pause, Redo and Delete end it, and nothing of it stays.
TEST_P(Workers, EndWhenTheyAreTold) {
  for (const std::uint32_t stalled :
       {message::kAttachSession, message::kFileInformation, message::kReadBlock}) {
    world.peer.ForgetRequests();
    Fault(Fault::Kind::Stall, stalled, 0, 0);
    const TaskPointer task = Serve();
    if (!world.scheduler) {
      world.Start();
    }
    const auto isStalled = [&] { return world.Count(stalled) > 0; };
    ASSERT_TRUE(world.told->Until(isStalled)) << stalled;
    world.peer.ClearFaults();
    world.Redo(task);
    ASSERT_TRUE(world.WaitForState(*task, TransferState::Finished)) << stalled;
    EXPECT_TRUE(ReadFile(world.local.File("f")) == bytes);

    world.peer.ForgetRequests();
    Fault(Fault::Kind::Stall, stalled, 0, 0);
    world.Redo(task);
    ASSERT_TRUE(world.told->Until(isStalled)) << stalled;
    world.store->RemoveTask(task->id, TaskStore::LocalFiles::Remove);
    ASSERT_TRUE(world.told->Until([&] { return !task->Running(); })) << stalled;
    EXPECT_FALSE(std::filesystem::exists(world.local.File("f"))) << stalled;
    world.peer.ClearFaults();
  }
}

TEST_P(Workers, APauseEndsEveryWaitAndLeavesNoResult) {
  const TaskPointer task = Serve();
  // Before a new connection, then in a block.
  world.context->reconnectDelays = {kForEver};
  Fault(Fault::Kind::DropBefore, message::kReadBlock, 2, 1);
  world.Start();
  ASSERT_TRUE(world.told->Until([&] { return world.told->waits == 1; }));
  world.Pause(task);
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Stopped));
  EXPECT_EQ(world.told->last.code, result::kOk);
  EXPECT_EQ(task->record->resultCode, 0U);

  world.peer.ForgetRequests();
  Fault(Fault::Kind::Stall, message::kReadBlock, 1, 0);
  world.Run(task);
  ASSERT_TRUE(world.told->Until([&] { return world.Count(message::kReadBlock) == 2; }));
  const auto paused = std::chrono::steady_clock::now();
  world.Pause(task);
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
  world.Renew(kPace);
  WriteFile(world.served.File("f"), Pattern(4 * 4096));
  const auto begun = std::chrono::steady_clock::now();
  world.Start();
  const TaskPointer task = world.Fetch("f");
  ASSERT_TRUE(world.WaitForState(*task, TransferState::Finished));
  EXPECT_GE(std::chrono::steady_clock::now() - begun, 3 * kPace);

  world.End();
  EngineWorld slow(Dialect(1));
  slow.Renew(kForEver);
  WriteFile(slow.served.File("f"), Pattern(4096));
  slow.Start();
  EXPECT_TRUE(slow.WaitForState(*slow.Fetch("f"), TransferState::Finished));
}

TEST(WorkerOrder, HeadersLeaveTwoWorkersToTheUser) {
  EngineWorld world(Dialect(1));
  world.peer.AddFault({Fault::Kind::Stall, message::kFileInformation, 0, 8, 0});
  for (int i = 0; i < 12; ++i) {
    world.Fetch("header" + std::to_string(i), false);
  }
  world.Start();
  ASSERT_TRUE(world.told->Until([&] { return world.Count(message::kFileInformation) == 8; }));
  WriteFile(world.served.File("f"), "bytes");
  EXPECT_TRUE(world.WaitForState(*world.Fetch("f"), TransferState::Finished));
  EXPECT_EQ(world.Count(message::kFileInformation), 9);
}

TEST(WorkerOrder, NothingStartsBeforeASessionWasGranted) {
  struct : WorkerSession {
    SessionKey Key() const override { return granted ? world->session.Key() : SessionKey{}; }
    std::optional<SessionKey> Renew(const SessionKey&, std::stop_token) override { return {}; }
    ListingAnswer List(const std::string&, std::stop_token) override { return {}; }
    EngineWorld* world = nullptr;
    std::atomic<bool> granted{false};
  } session;
  EngineWorld world(Dialect(1));
  session.world = &world;
  world.context->session = &session;
  WriteFile(world.served.File("f"), "bytes");
  const TaskPointer task = world.Fetch("f");
  world.Start();
  EXPECT_FALSE(world.told->Until([&] { return task->Running(); }, std::chrono::milliseconds(50)));
  session.granted = true;
  world.context->schedulerWake.Set();
  EXPECT_TRUE(world.WaitForState(*task, TransferState::Finished));
  world.End();
}

}  // namespace
}  // namespace updown
