// Runs the task list in a file as the program does at its start, at a slow pace; for tests that
// kill it. Says "saved" and "block" on standard output as that happens.
#include <cstdio>
#include <latch>

#include "engine/posted_events.h"
#include "engine/scheduler.h"
#include "engine/session.h"
#include "engine/task_store.h"
#include "localdata/tasklist.h"
#include "platform/event.h"

namespace updown {
namespace {

class Talker : public EngineEvents {
 public:
  Talker(const TaskStore& store, const char* list) : store_(store), list_(list) {}
  void TaskStarted(TaskId /*task*/) noexcept override {}
  void BlockDone(TaskId /*task*/) noexcept override { Say("block"); }
  void TaskEnded(TaskId /*task*/, const TransferResult& /*result*/) noexcept override {}
  void SaveNeeded() noexcept override {
    SaveTaskList(store_.Records(), list_);
    Say("saved");
  }

 private:
  static void Say(const char* what) {
    std::puts(what);
    std::fflush(stdout);
  }
  const TaskStore& store_;
  const char* list_;
};

bool AllFinished(const TaskQueue& queue) {
  bool all = true;
  queue.ForEach([&all](const TransferTask& task) {
    all = all && task.record->state == TransferState::Finished && !task.WorkerActive();
  });
  return all;
}

int RunList(const char* list) {
  LaunchState launch;
  launch.serverName = "fileservice";
  FileService service;
  std::latch granted(1);
  Session session(service, launch, [](const std::function<void()>&) {}, nullptr,
                  [&granted] {
                    if (!granted.try_wait()) {
                      granted.count_down();
                    }
                  });
  session.Open(AskedBy::Program, [](const SessionResult&) {});
  granted.wait();
  const auto context = std::make_shared<SchedulerContext>();
  context->queue = std::make_shared<TaskQueue>();
  context->service = &service;
  context->pace = std::chrono::milliseconds(20);
  TaskStore store(context->queue, launch);
  for (const auto& record : LoadTaskList(list)) {
    store.AddStoredRecord(record);
  }
  Event woken;
  const auto calls = std::make_shared<PostedCalls>([&woken] { woken.Set(); });
  Talker talker(store, list);
  context->events = std::make_shared<PostedEvents>(calls, talker);
  store.RestoreTasks(session.Key().sessid, [](TaskId) {});
  context->schedulerWake.Set();
  Scheduler scheduler(context);
  while (!AllFinished(*context->queue)) {
    woken.WaitFor(std::chrono::milliseconds(5));
    woken.Reset();
    calls->Run();
  }
  SaveTaskList(store.Records(), list);
  calls->Close();
  return scheduler.Stop(std::chrono::seconds(2)) ? 0 : 1;
}

}  // namespace
}  // namespace updown

int main(int argc, char** argv) { return argc == 2 ? updown::RunList(argv[1]) : 2; }
