// The engine in a process of its own, without windows: fetches one file or one folder of the
// service that the environment names, and ends. What it costs is for whoever started it to see.
//
//   engine_fetch file|folder REMOTE LOCAL         UPDOWN_BLOCK_PACE_MS as for the client
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>

#include "engine/engine_events.h"
#include "engine/scheduler.h"
#include "engine/session.h"
#include "engine/task_store.h"
#include "platform/environment.h"
#include "platform/event.h"
#include "platform/posted_calls.h"
#include "wire/text_coding.h"

namespace updown::bench {
namespace {

constexpr std::chrono::minutes kPatience{10};

class Ending final : public EngineEvents {
 public:
  void TaskStarted(TaskId /*task*/) noexcept override {}
  void BlockDone(TaskId /*task*/) noexcept override {}
  void TaskWaiting(TaskId /*task*/) noexcept override {}
  void SaveNeeded() noexcept override {}
  void TaskEnded(TaskId /*task*/, const TransferResult& result) noexcept override {
    result_ = result.code;
    ended_.Set();
  }
  // The result code; 1 if there was none in time.
  int Wait() { return ended_.WaitFor(kPatience) ? result_ : 1; }

 private:
  Event ended_;
  int result_ = 0;
};

int Fetch(bool folder, const std::string& remote, const std::string& local) {
  LaunchState launch;
  launch.serverName = "fileservice";
  launch.appid = LetterDecode(ReadVariable(kVariableApplication, 260).value_or(""), 260).bytes;
  FileService service;
  Event granted;
  Session session(
      service, launch, [](const std::function<void()>&) {}, nullptr, [&] { granted.Set(); });
  const auto ending = std::make_shared<Ending>();
  const auto context = std::make_shared<SchedulerContext>();
  context->queue = std::make_shared<TaskQueue>();
  context->service = &service;
  context->session = &session;
  context->events = ending;
  context->pace =
      std::chrono::milliseconds(LeadingNumber(ReadVariable(kVariableBlockPace, 16).value_or("0")));
  TaskStore store(context->queue, launch);
  StoredRecord stored;
  stored.recordId = 1;
  stored.isFolder = folder ? 1 : 0;
  stored.paths = {remote, local};
  const auto record = std::make_shared<TransferRecord>(stored);
  record->keepAcrossRestart = 1;
  store.AddStoredRecord(record);
  session.Open(AskedBy::Program, [](const SessionResult&) {});
  if (!granted.WaitFor(kPatience)) {
    return 1;
  }
  store.RestoreTasks([](TaskId) {});
  Scheduler scheduler(context);
  context->schedulerWake.Set();
  const int result = ending->Wait();
  const bool finished = record->state == TransferState::Finished;
  return scheduler.Stop(std::chrono::seconds(5)) && finished ? result : 1;
}

}  // namespace
}  // namespace updown::bench

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("engine_fetch file|folder REMOTE LOCAL\n", stderr);
    return 2;
  }
  const int result = updown::bench::Fetch(std::string(argv[1]) == "folder", argv[2], argv[3]);
  if (result != 0) {
    std::printf("failed: %d\n", result);
  }
  return result == 0 ? 0 : 1;
}
