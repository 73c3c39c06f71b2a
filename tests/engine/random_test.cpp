#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "service/messages.h"
#include "tests/engine/engine_world.h"

namespace updown {
namespace {

using peer::Fault;
using test::EngineWorld;
using test::Pattern;
using test::ReadFile;
using test::WriteFile;

// What users and the network do to files and folders, in quick succession; then all is to finish
// with the service's bytes, and what was deleted is to leave nothing. UPDOWN_TEST_SEED sets another
// seed.
class AnyOrder : public ::testing::TestWithParam<int> {
 protected:
  static constexpr int kFiles = 3;
  static constexpr int kFolders = 2;
  static constexpr const char* kInside[] = {"a", "b", "c", "empty", "sub/d", "sub/deep/e", "sub/f"};

  struct Wanted {
    TaskPointer task;
    std::string remote, local;
    bool folder = false;
  };

  AnyOrder() {
    for (int n = 0; n < kFiles; ++n) {
      WriteFile(world.served.File("file" + std::to_string(n)), Pattern(60000 + n, n + 1));
    }
    for (int n = 0; n < kFolders; ++n) {
      const std::string folder = world.served.File("folder" + std::to_string(n));
      std::filesystem::create_directories(folder + "/sub/deep");
      for (const std::string inside : kInside) {
        WriteFile(folder + "/" + inside,
                  inside == "empty" ? "" : Pattern(20000, inside.size() + inside.back()));
      }
    }
    for (int n = 0; n < kFiles + kFolders; ++n) {
      wanted.push_back(Add(n));
    }
  }

  std::uint32_t Dice(std::uint32_t sides) { return static_cast<std::uint32_t>(dice() % sides); }

  Wanted Add(int n) {
    const bool folder = n >= kFiles;
    const std::string name =
        folder ? "folder" + std::to_string(n - kFiles) : "file" + std::to_string(n);
    Wanted made{nullptr, name, world.local.File(name + "-" + std::to_string(++made_)), folder};
    const TaskDraft draft{name, "/" + name, "fileservice", 8080};
    made.task = folder ? world.store->AddFolderDownload(draft, made.local)
                       : world.store->AddDownload(draft, made.local, true);
    return made;
  }

  void Step() {
    const std::uint32_t n = Dice(kFiles + kFolders);
    const TaskId id = wanted[n].task->id;
    switch (Dice(12)) {
      case 0:
      case 1:
        return world.store->Pause(id);
      case 2:
      case 3:
      case 4:
      case 5:
        world.store->Resume(id);
        return;
      case 6:
        world.store->Redo(id);
        return;
      case 7:
        world.store->RemoveTask(id, TaskStore::LocalFiles::Remove);
        deleted.push_back(wanted[n]);
        wanted[n] = Add(static_cast<int>(n));
        return;
      case 8:
        return world.peer.ForgetSessions();
      case 9: {
        constexpr Fault::Kind kKinds[] = {Fault::Kind::DropBefore, Fault::Kind::DropInside,
                                          Fault::Kind::DropAfter, Fault::Kind::EmptyBlock,
                                          Fault::Kind::BadList};
        return world.peer.AddFault({kKinds[Dice(5)], message::kReadBlock, Dice(20), 1, 0});
      }
      default:
        std::this_thread::sleep_for(std::chrono::milliseconds(Dice(8)));
    }
  }

  // Whether all of it is there, right to the last byte.
  bool IsWhole(const Wanted& what) const {
    const std::string served = world.served.File(what.remote);
    if (!what.folder) {
      return ReadFile(what.local) == ReadFile(served);
    }
    return std::ranges::all_of(kInside, [&](const std::string inside) {
      return std::filesystem::exists(what.local + "/" + inside) &&
             ReadFile(what.local + "/" + inside) == ReadFile(served + "/" + inside);
    });
  }

  EngineWorld world{test::Dialect(GetParam())};
  std::minstd_rand dice;
  std::vector<Wanted> wanted;
  std::vector<Wanted> deleted;

 private:
  int made_ = 0;
};

TEST_P(AnyOrder, EndsWithTheRightBytes) {
  const char* const given = std::getenv("UPDOWN_TEST_SEED");
  const unsigned seed = given != nullptr ? static_cast<unsigned>(std::atoi(given)) : 7U;
  SCOPED_TRACE("seed " + std::to_string(seed));
  dice.seed(seed);
  world.Start();
  for (int step = 0; step < 600; ++step) {
    Step();
  }
  world.peer.ClearFaults();
  for (const Wanted& what : wanted) {
    ASSERT_TRUE(world.told->Until([&] {
      const TransferState state = what.task->record->state;
      if (state != TransferState::Finished && state != TransferState::Queued) {
        world.store->Resume(what.task->id);
      }
      return state == TransferState::Finished && !what.task->Running();
    })) << what.local
        << " is " << static_cast<int>(what.task->record->state.load());
    EXPECT_TRUE(IsWhole(what)) << what.local;
    if (what.folder) {
      EXPECT_EQ(what.task->Progress(), (TaskProgress{120000, 120000, 7, 7}));
    }
  }
  for (const Wanted& what : deleted) {
    EXPECT_TRUE(world.told->Until([&] { return !what.task->Running(); }));
    const bool kept = what.task->record->state == TransferState::Finished;
    EXPECT_EQ(std::filesystem::exists(what.local), kept) << what.local;
    EXPECT_TRUE(!kept || IsWhole(what)) << what.local;
  }
  EXPECT_TRUE(world.told->Until([&] { return world.peer.OpenConnections() == 1; }));
}

INSTANTIATE_TEST_SUITE_P(Dialects, AnyOrder, ::testing::Values(1, 2));

}  // namespace
}  // namespace updown
