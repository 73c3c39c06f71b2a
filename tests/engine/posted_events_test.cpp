#include "engine/posted_events.h"

#include <gmock/gmock.h>

#include <string>
#include <thread>
#include <vector>

namespace updown {
namespace {

class Log : public EngineEvents {
 public:
  void TaskStarted(TaskId task) noexcept override { Add("start", task); }
  void BlockDone(TaskId task) noexcept override { Add("block", task); }
  void TaskWaiting(TaskId task) noexcept override { Add("wait", task); }
  void TaskEnded(TaskId task, const TransferResult& result) noexcept override {
    Add("end " + std::to_string(result.code) + result.path, task);
  }
  void SaveNeeded() noexcept override { lines.emplace_back("save"); }

  std::vector<std::string> lines;

 private:
  void Add(const std::string& what, TaskId task) {
    lines.push_back(what + " " + std::to_string(task));
  }
};

TEST(PostedEvents, BlocksThatWaitBecomeOneAndAllElseKeepsItsPlace) {
  const auto calls = std::make_shared<PostedCalls>([] {});
  Log log;
  PostedEvents events(calls, log);
  events.TaskStarted(1);
  events.TaskStarted(2);
  for (int block = 0; block < 3; ++block) {
    events.BlockDone(1);
    events.BlockDone(2);
  }
  events.TaskEnded(1, {-8194, 5, "/x"});
  events.TaskEnded(1, {-8194, 5, "/x"});
  events.SaveNeeded();
  calls->Run();
  events.BlockDone(2);
  calls->Run();
  EXPECT_THAT(log.lines,
              ::testing::ElementsAre("start 1", "start 2", "block 1", "block 2", "end -8194/x 1",
                                     "end -8194/x 1", "save", "block 2"));
  events.BlockDone(2);
  calls->Close();
  events.TaskEnded(2, {});
  calls->Run();
  EXPECT_EQ(log.lines.size(), 8U) << "nothing after the end";
}

// A worker's last block must be seen however the main thread's look at it falls.
TEST(PostedEvents, ABlockDuringTheLookIsToldAnew) {
  struct Counter : Log {
    void BlockDone(TaskId /*task*/) noexcept override { seen = bytes.load(); }
    std::atomic<int> bytes{0};
    int seen = 0;
  } counter;
  const auto calls = std::make_shared<PostedCalls>([] {});
  PostedEvents events(calls, counter);
  constexpr int kBlocks = 20000;
  std::thread worker([&] {
    for (int block = 0; block < kBlocks; ++block) {
      ++counter.bytes;
      events.BlockDone(1);
    }
  });
  while (counter.bytes < kBlocks) {
    calls->Run();
  }
  worker.join();
  calls->Run();
  EXPECT_EQ(counter.seen, kBlocks);
}

}  // namespace
}  // namespace updown
