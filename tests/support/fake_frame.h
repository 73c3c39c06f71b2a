#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "engine/frame_messages.h"
#include "engine/frame_operations.h"
#include "platform/qt/message_target.h"
#include "platform/unique_fd.h"
#include "tests/service/script.h"
#include "tests/support/temporary_folder.h"

namespace updown::test {

using Log = std::vector<std::string>;

// The frame as its panes know it: real tasks, cache and session, and a log of what it is asked for.
// The service at the session's other end grants `grantedSessid`; while that is empty it cannot be
// reached.
class FakeFrame : public FrameOperations {
 public:
  WindowHandle FrameWindow() const override { return target_.Handle(); }
  void ReportResult(std::int64_t code) override { log.push_back("report " + std::to_string(code)); }
  bool AddUserDownload(bool keep, const TaskDraft& draft) override {
    log.push_back("save " + draft.displayName + " from " + draft.remotePath);
    return keep;
  }
  void AddCacheDownload(bool, const TaskDraft& draft) override {
    log.push_back("fetch " + draft.displayName + " from " + draft.remotePath);
  }
  void RestoreTasks() override { ++restores; }
  void RemoveTask(TaskId task) override { store_.RemoveTask(task); }
  TaskStore& Tasks() override { return store_; }
  SharedSession& Session() override { return session_; }
  const LaunchState& Launch() const override { return launch; }
  const PackageCache& Cache() const override { return cache_; }

  std::string CacheFile(const std::string& name) const { return folder_.File(name); }
  Log TakeLog() { return std::exchange(log, {}); }

  std::string grantedSessid = "granted";
  int restores = 0;
  Log log;
  LaunchState launch;

 protected:
  virtual MessageResult Receive(const WindowMessage& message) {
    if (message.number == frame_message::kWakeScheduler) {
      log.emplace_back("wake");
    }
    return 0;
  }

 private:
  int Connect(Connection& link) {
    log.emplace_back("connect");
    int ends[2];
    if (grantedSessid.empty() || socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
      return result::kConnection;
    }
    service_ = UniqueFd(ends[1]);
    const std::string reply = testing::First(32768, grantedSessid);
    EXPECT_EQ(write(ends[1], reply.data(), reply.size()), static_cast<ssize_t>(reply.size()));
    return link.Adopt(ends[0]);
  }

  TemporaryFolder folder_;
  UniqueFd service_;
  FileService dialect_;
  TaskStore store_{std::make_shared<TaskQueue>(), launch};
  SharedSession session_{
      dialect_, launch, nullptr,
      [this](Connection& link, std::string_view, std::uint16_t) { return Connect(link); }};
  PackageCache cache_{folder_.Path()};
  MessageTarget target_{[this](const WindowMessage& message) { return Receive(message); }};
};

}  // namespace updown::test
