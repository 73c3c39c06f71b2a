#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "localdata/tasklist.h"
#include "service/messages.h"
#include "tests/engine/engine_world.h"

namespace updown {
namespace {

using test::Pattern;
using test::ReadFile;
using test::WriteFile;

// A process of its own that runs a task list.
class ListRunner {
 public:
  explicit ListRunner(std::string list) {
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) {
      return;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    std::string program = RUN_LIST_PROGRAM;
    char* arguments[] = {program.data(), list.data(), nullptr};
    posix_spawn(&pid_, program.c_str(), &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    output_.reset(fdopen(ends[0], "r"));
  }

  bool ReadUntil(const std::string& line) {
    char text[64];
    while (fgets(text, sizeof text, output_.get()) != nullptr) {
      if (text == line + "\n") {
        return true;
      }
    }
    return false;
  }
  void Kill() const { kill(pid_, SIGKILL); }
  int Wait() const {
    int status = -1;
    waitpid(pid_, &status, 0);
    return status;
  }

 private:
  pid_t pid_ = -1;
  std::unique_ptr<FILE, int (*)(FILE*)> output_{nullptr, &fclose};
};

class Restart : public testing::TestWithParam<int> {};

TEST_P(Restart, AfterAKillInMidTransferTheBytesAreRight) {
  test::EngineWorld world(test::Dialect(GetParam()));
  const std::string big = Pattern(200000);
  WriteFile(world.served.File("big"), big);
  WriteFile(world.served.File("small"), Pattern(12000, 2));
  // Put in place by hand, as a list that an earlier run has left.
  const std::string list = world.local.File("tasks.lst");
  RecordChain chain;
  for (const char* name : {"big", "small"}) {
    StoredRecord stored;
    stored.recordId = static_cast<std::uint32_t>(chain.Size() + 1);
    stored.paths = {std::string("/") + name, world.local.File(name)};
    chain.Append(std::make_shared<TransferRecord>(stored));
  }
  SaveTaskList(chain, list);

  {
    ListRunner killed(list);
    ASSERT_TRUE(killed.ReadUntil("saved"));  // the small file is through
    ASSERT_TRUE(killed.ReadUntil("block"));
    killed.Kill();
    EXPECT_TRUE(WIFSIGNALED(killed.Wait()));
  }
  RecordChain left = LoadTaskList(list);
  ASSERT_EQ(left.Size(), 1U);
  const std::uint32_t stored = left.First()->doneBytes;
  EXPECT_EQ(stored % 4096, 0U) << "whole blocks, those that are on the disk for good";
  EXPECT_EQ(ReadFile(world.local.File("big")).substr(0, stored), big.substr(0, stored));

  // What the killed process still had under way is not the second one's.
  ASSERT_TRUE(world.pump.RunUntil([&] { return world.peer.OpenConnections() == 1; }));
  world.peer.ForgetRequests();
  EXPECT_EQ(ListRunner(list).Wait(), 0);
  EXPECT_EQ(world.Count(message::kReadBlock), (big.size() - stored + 4095) / 4096);
  EXPECT_EQ(ReadFile(world.local.File("big")), big);
  EXPECT_EQ(ReadFile(world.local.File("small")), Pattern(12000, 2));
  EXPECT_TRUE(LoadTaskList(list).Empty());
}

INSTANTIATE_TEST_SUITE_P(Dialects, Restart, testing::Values(1, 2));

}  // namespace
}  // namespace updown
