#include "engine/task_list_saver.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <deque>
#include <mutex>

#include "engine/kept_tasks.h"
#include "service/result_codes.h"
#include "tests/support/temporary_folder.h"

namespace updown {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds kPatience{20000};

std::vector<StoredRecord> Snapshot(std::uint32_t id) {
  return {StoredRecord{.paths = {}, .recordId = id}};
}

// A disk whose writes begin, and end with a result, as the test says.
class Disk {
 public:
  int Write(std::span<const StoredRecord> records) {
    Add(begun_, records.front().recordId);
    std::unique_lock lock(mutex_);
    if (!changed_.wait_for(lock, kPatience, [this] { return !results_.empty(); })) {
      return -1;
    }
    const int result = results_.front();
    results_.pop_front();
    return result;
  }
  void Report(int error) { Add(reports_, error); }
  void Answer(int result) { Add(results_, result); }
  bool WaitForWrites(std::deque<std::uint32_t> wanted) { return WaitFor(begun_, wanted); }
  bool WaitForReports(std::deque<int> wanted) { return WaitFor(reports_, wanted); }

 private:
  template <typename Values, typename Value>
  void Add(Values& values, Value value) {
    const std::lock_guard lock(mutex_);
    values.push_back(value);
    changed_.notify_all();
  }
  template <typename Values>
  bool WaitFor(const Values& values, const Values& wanted) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, kPatience, [&] { return values == wanted; });
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::uint32_t> begun_;
  std::deque<int> results_;
  std::deque<int> reports_;
};

struct World : Disk {
  explicit World(milliseconds retry)
      : saver([this](auto records) { return Write(records); }, [this](int error) { Report(error); },
              retry) {}
  TaskListSaver saver;
};

TEST(TaskListSaver, WritesTheNewestAndRepeatsWhatFails) {
  World world(milliseconds(1));
  world.saver.Save(Snapshot(1));
  ASSERT_TRUE(world.WaitForWrites({1}));
  world.saver.Save(Snapshot(2));
  world.saver.Save(Snapshot(3));
  world.Answer(0);
  ASSERT_TRUE(world.WaitForWrites({1, 3}));
  world.Answer(ENOSPC);
  ASSERT_TRUE(world.WaitForWrites({1, 3, 3}));
  world.saver.Save(Snapshot(4));
  world.Answer(EACCES);  // told once, whatever the reason becomes
  ASSERT_TRUE(world.WaitForWrites({1, 3, 3, 4}));
  world.Answer(0);
  EXPECT_TRUE(world.WaitForReports({ENOSPC, 0}));
  EXPECT_TRUE(world.saver.Finish(Clock::now() + kPatience));
}

// The pause behind a failure does not hold up the end, and a last try is made.
TEST(TaskListSaver, TheEndWaitsForTheLastSnapshot) {
  for (const bool full : {true, false}) {
    World world(kPatience);
    world.Answer(ENOSPC);
    world.Answer(full ? ENOSPC : 0);
    world.saver.Save(Snapshot(1));
    ASSERT_TRUE(world.WaitForReports({ENOSPC}));
    EXPECT_EQ(world.saver.Finish(Clock::now() + kPatience), !full);
    EXPECT_TRUE(world.WaitForWrites({1, 1}));
    EXPECT_TRUE(world.WaitForReports({ENOSPC})) << "nobody is told behind the end";
  }
  EXPECT_TRUE(World(kPatience).saver.Finish(Clock::now())) << "nothing was ever to be saved";
}

TEST(TaskListSaver, AWriteThatHangsIsLeftBehind) {
  const auto disk = std::make_shared<Disk>();
  TaskListSaver saver([disk](auto records) { return disk->Write(records); }, nullptr);
  saver.Save(Snapshot(1));
  ASSERT_TRUE(disk->WaitForWrites({1}));
  EXPECT_FALSE(saver.Finish(Clock::now() + milliseconds(10)));
  disk->Answer(0);
}

TEST(TaskListSaver, ManyStartsAndEnds) {
  for (std::uint32_t round = 0; round < 500; ++round) {
    std::uint32_t stored = 0;
    TaskListSaver saver(
        [&stored](std::span<const StoredRecord> records) {
          stored = records.front().recordId;
          return 0;
        },
        nullptr);
    for (std::uint32_t id = 1; id <= round % 4; ++id) {
      saver.Save(Snapshot(id));
    }
    ASSERT_TRUE(saver.Finish(Clock::now() + kPatience));
    ASSERT_EQ(stored, round % 4);
  }
}

TEST(KeptTasks, FetchesOfHeadersAreNeitherStoredNorRestored) {
  const test::TemporaryFolder folder;
  const PackageCache cache(folder.Path() + "/INICache/now");
  std::filesystem::create_directories(cache.Root());
  test::WriteFile(cache.PathOf("cut.ini"), "[Tall");
  const auto record = [](std::uint32_t id, const std::string& target) {
    return StoredRecord{.paths = {"/x", target}, .recordId = id};
  };
  // The second cache is the one that the identity had in an earlier version.
  RecordList records = RestoredRecords(
      {record(1, folder.File("mine.ini")), record(2, cache.PathOf("other.ini")),
       record(3, folder.File("INICache/earlier/cut.ini")), record(4, folder.File("INICache2/x"))},
      cache);
  EXPECT_FALSE(cache.Names().contains("cut.ini"));
  records.push_back(std::make_shared<TransferRecord>(record(5, folder.File("hidden"))));
  records.push_back(std::make_shared<TransferRecord>(record(6, cache.PathOf("x.ini"))));
  std::vector<std::uint32_t> kept;
  for (const StoredRecord& stored : KeptRecords(records, cache)) {
    kept.push_back(stored.recordId);
  }
  EXPECT_EQ(kept, (std::vector<std::uint32_t>{1, 4}));
}

TEST(KeptTasks, AStoredFailureNamesTheEndThatItIsAbout) {
  const std::tuple<TransferState, int, const char*> cases[] = {
      {TransferState::Failed, result::kFileWrite, "/local"},
      {TransferState::Failed, result::kNoSuchRemoteFile, "/remote"},
      {TransferState::Failed, result::kNotEncodable, ""},
      {TransferState::Failed, 0, ""},
      {TransferState::Stopped, result::kFileOpen, ""},
  };
  for (const auto& [state, code, path] : cases) {
    StoredRecord stored;
    stored.paths = {"/remote", "/local"};
    stored.state = state;
    stored.resultCode = result::WithoutSign(code);
    const TransferResult failure = StoredFailure(TransferRecord(stored));
    EXPECT_EQ(failure.code, state == TransferState::Failed ? code : 0);
    EXPECT_EQ(failure.path, path) << code;
  }
}

}  // namespace
}  // namespace updown
