#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <thread>
#include <utility>

#include "resources/string_id.h"
#include "service/messages.h"
#include "tests/engine/engine_world.h"

namespace updown {
namespace {

using test::EngineWorld;
using test::Pattern;
using test::ReadFile;
using test::WriteFile;

// What changes on the service, or on the way to it, while a transfer runs.
class Outage : public ::testing::TestWithParam<int> {
 protected:
  Outage() {
    std::filesystem::create_directories(world.served.File("pkg/sub"));
    WriteFile(world.served.File("pkg/a.bin"), bytes);
    WriteFile(world.served.File("pkg/sub/b.bin"), bytes);
  }

  const std::string bytes = Pattern(40000);  // ten blocks
  EngineWorld world{test::Dialect(GetParam())};
};

// The relay cannot be reached when the second listing is asked for, and then it can.
TEST_P(Outage, OfAListingIsWaitedFor) {
  struct : WorkerSession {
    SessionKey Key() const override { return world->session.Key(); }
    std::optional<SessionKey> Renew(const SessionKey&, std::stop_token) override { return {}; }
    ListingAnswer List(const std::string& path, std::stop_token stop) override {
      if (path.ends_with("sub/") && !std::exchange(failed, true)) {
        world->told->Until([this] { return task->Bytes() != 0; });
        return {{SessionResult::End::Failed, static_cast<std::uint32_t>(StringId::NetworkError)},
                {}};
      }
      return world->session.List(path, stop);
    }
    EngineWorld* world = nullptr;
    TaskPointer task;
    bool failed = false;
  } session;
  session.world = &world;
  world.context->session = &session;
  session.task =
      world.store->AddFolderDownload({"pkg", "/pkg", "fileservice", 8080}, world.local.File("pkg"));
  world.Start();
  const TransferRecord& record = *session.task->record;
  EXPECT_TRUE(world.told->Until([&] { return record.state != TransferState::Queued; }));
  EXPECT_EQ(record.state, TransferState::Finished);
  EXPECT_TRUE(session.failed);
  EXPECT_TRUE(ReadFile(world.local.File("pkg/sub/b.bin")) == bytes);
  world.End();
}

// The service has renamed the package, and the client does not know yet.
TEST_P(Outage, OfARenamedFileEndsWithTheNewName) {
  world.Renew(std::chrono::milliseconds(20));
  world.context->reconnectDelays = {std::chrono::seconds(1)};
  const TaskPointer task = world.store->AddDownload({"a.bin", "/pkg/a.bin", "fileservice", 8080},
                                                    world.local.File("a.bin"), true);
  world.Start();
  ASSERT_TRUE(world.told->Until([&] { return task->record->doneBytes != 0; }));
  std::filesystem::rename(world.served.File("pkg"), world.served.File("new"));
  const long before = world.Count(message::kReadBlock);
  EXPECT_TRUE(world.told->Until([&] { return world.Count(message::kReadBlock) > before; }));
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  world.store->FollowRename("/pkg", "/new");
  EXPECT_TRUE(world.WaitForState(*task, TransferState::Finished));
  EXPECT_TRUE(ReadFile(world.local.File("a.bin")) == bytes);
}

// A worker's listing hangs: what a person has asked for behind it can be cancelled, and once the
// worker is told to stop the connection is free.
TEST_P(Outage, OfAWorkersListingKeepsNobodyFromBrowsing) {
  std::atomic<int> cancelled{0};
  std::atomic<int> listed{0};
  const auto count = [&](const ListingAnswer& answer) {
    cancelled += answer.result.end == SessionResult::End::Cancelled ? 1 : 0;
    listed += answer.result.Done() ? 1 : 0;
  };
  Session session(
      world.service, world.launch, [](const std::function<void()>& call) { call(); }, nullptr,
      [] {});
  world.peer.AddFault({peer::Fault::Kind::Stall, message::kList, 0, 1, 0});
  std::jthread worker([&](const std::stop_token& stop) { session.List("/", stop); });
  ASSERT_TRUE(world.told->Until([&] { return world.Count(message::kList) == 1; }));
  session.ListFolder("/", ListAgain::No, AskedBy::Person, count);
  session.Cancel();
  EXPECT_EQ(cancelled, 1);
  worker.request_stop();
  worker.join();
  session.ListFolder("/", ListAgain::No, AskedBy::Person, count);
  EXPECT_TRUE(world.told->Until([&] { return listed == 1; }, std::chrono::seconds(5)));
  EXPECT_EQ(cancelled, 1);
  session.Stop(std::chrono::seconds(2));
}

INSTANTIATE_TEST_SUITE_P(Dialects, Outage, ::testing::Values(1, 2));

}  // namespace
}  // namespace updown
