// Runs the task list in a file as the program does at its start, at a slow pace; for tests that
// kill it. Says "saved" and "block" on standard output as that happens.
#include <atomic>
#include <cstdio>
#include <thread>

#include "engine/frame_messages.h"
#include "engine/scheduler.h"
#include "engine/shared_session.h"
#include "localdata/tasklist.h"
#include "tests/support/window_pump.h"

int main(int argc, char** argv) {
  using namespace updown;
  if (argc != 2) {
    return 2;
  }
  LaunchState launch;
  launch.serverName = "fileservice";
  FileService service;
  SharedSession session(service, launch, nullptr);
  session.OpenSharedSession();
  const auto context = std::make_shared<SchedulerContext>();
  context->queue = std::make_shared<TaskQueue>();
  context->service = &service;
  context->pace = std::chrono::milliseconds(20);
  TaskStore store(context->queue, launch);
  store.Records() = LoadTaskList(argv[1]);

  test::WindowPump pump;
  const auto frame = pump.MakeWindow([&](const WindowMessage& message) {
    if (message.number == frame_message::kSaveTaskList) {
      SaveTaskList(store.Records(), argv[1]);
      std::puts("saved");
    } else if (message.number == frame_message::kBlockDone) {
      std::puts("block");
    }
    std::fflush(stdout);
    return MessageResult{0};
  });
  store.RestoreTasks(session.Sessid(), frame);
  context->schedulerWake.Set();
  Scheduler scheduler(context);
  const bool finished = pump.RunUntil([&] {
    bool all = true;
    context->queue->ForEach([&all](const TransferTask& task) {
      all = all && task.record->state == TransferState::Finished && !task.WorkerActive();
    });
    return all;
  });
  SaveTaskList(store.Records(), argv[1]);
  pump.DestroyWindow(frame);
  return scheduler.Stop(std::chrono::seconds(2)) && finished ? 0 : 1;
}
