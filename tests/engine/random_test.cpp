#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "service/messages.h"
#include "tests/engine/engine_world.h"

namespace updown {
namespace {

using test::EngineWorld;
using test::Pattern;
using test::ReadFile;
using test::WriteFile;
using Kind = peer::Fault::Kind;

// What users and the network do to files and folders, in quick succession; then all is to finish
// with the service's bytes, and what was deleted is to leave nothing. UPDOWN_TEST_SEED sets another
// seed.
class AnyOrder : public ::testing::TestWithParam<int> {
 protected:
  using Names = std::vector<std::string>;
  struct Wanted {
    TaskPointer task;
    std::string name, local;
  };

  AnyOrder() {
    for (const std::string name : {"file0", "file1", "file2", "folder0", "folder1"}) {
      for (const std::string& part : PartsOf(name)) {
        const std::filesystem::path served = world.served.File(name + part);
        std::filesystem::create_directories(served.parent_path());
        const std::size_t size = part.empty() ? 60000 : part == "/empty" ? 0 : 20000;
        WriteFile(served, Pattern(size, 256U * name.back() + (name + part).back()));
      }
      wanted.push_back(Add(name));
    }
  }

  static const Names& PartsOf(const std::string& name) {
    static const Names file = {""};
    static const Names folder = {"/a", "/b", "/c", "/empty", "/sub/d", "/sub/deep/e", "/sub/f"};
    return name.starts_with("folder") ? folder : file;
  }

  std::uint32_t Dice(std::uint32_t sides) { return static_cast<std::uint32_t>(dice() % sides); }

  Wanted Add(const std::string& name) {
    const std::string local = world.local.File(name + "-" + std::to_string(++made_));
    const TaskDraft draft{name, "/" + name, "fileservice", 8080};
    return {PartsOf(name).size() > 1 ? world.store->AddFolderDownload(draft, local)
                                     : world.store->AddDownload(draft, local, true),
            name, local};
  }

  void Step() {
    constexpr Kind kKinds[] = {Kind::DropBefore, Kind::DropInside, Kind::DropAfter,
                               Kind::EmptyBlock, Kind::BadList};
    Wanted& chosen = wanted[Dice(static_cast<std::uint32_t>(wanted.size()))];
    const TaskPointer& task = chosen.task;
    const std::uint32_t die = Dice(12);
    if (die < 2) {
      world.store->Pause(task->id);
    } else if (die < 6) {
      world.store->Resume(task->id);
    } else if (die < 7) {
      world.store->Redo(task->id);
    } else if (die < 8) {
      world.store->RemoveTask(task->id, TaskStore::LocalFiles::Remove);
      deleted.push_back(chosen);
      chosen = Add(chosen.name);
    } else if (die < 9) {
      world.peer.ForgetSessions();
    } else if (die < 10) {
      world.peer.AddFault({kKinds[Dice(5)], message::kReadBlock, Dice(20)});
    } else {
      std::this_thread::sleep_for(std::chrono::milliseconds(Dice(8)));
    }
  }

  // Whether all of it is there, right to the last byte.
  bool IsWhole(const Wanted& what) const {
    return std::ranges::all_of(PartsOf(what.name), [&](const std::string& part) {
      return std::filesystem::exists(what.local + part) &&
             ReadFile(what.local + part) == ReadFile(world.served.File(what.name + part));
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
    if (what.task->isFolder) {
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
