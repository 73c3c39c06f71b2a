#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>

#include "engine/engine_events.h"
#include "engine/task_queue.h"
#include "engine/worker_session.h"
#include "platform/event.h"
#include "platform/thread.h"
#include "service/operations.h"
#include "wire/sockets.h"

namespace updown {

inline constexpr std::size_t kWorkerSlots = 10;
inline constexpr std::chrono::milliseconds kIdleWait{10000};  // while no worker runs
inline constexpr std::chrono::milliseconds kPace{1000};       // after each block, on its worker
inline constexpr std::chrono::milliseconds kExitWait{60000};  // for workers, at the end

// What window, scheduler and workers share. Held by shared_ptr, because a worker that is stuck in
// the system outlives the window until the process ends.
struct SchedulerContext {
  std::shared_ptr<TaskQueue> queue;
  std::shared_ptr<EngineEvents> events;
  Event schedulerExit;
  Event schedulerWake;  // "look again", no more
  Event workersStop;    // at the exit, once running tasks are Stopped: cuts the pace short
  std::array<std::unique_ptr<Thread>, kWorkerSlots> workerThreads;  // the scheduler's alone

  const FileService* service = nullptr;  // outlives all threads
  WorkerSession* session = nullptr;      // so does it; stopped before the scheduler
  SocketGroup connections;               // of all workers; cut at exit
  ThreadStarter startThread = &Thread::Start;
  std::chrono::milliseconds pace = kPace;
};

// Runs until schedulerExit: keeps up to ten workers on runnable tasks, in queue order. At its end
// running tasks go to Stopped, their connections are cut, and it waits for the workers, at most
// kExitWait.
void SchedulerThread(const std::shared_ptr<SchedulerContext>& context);

// The scheduler's thread as the window holds it.
class Scheduler {
 public:
  explicit Scheduler(std::shared_ptr<SchedulerContext> context);
  ~Scheduler();  // tells it to end, without waiting
  Scheduler(const Scheduler&) = delete;
  Scheduler& operator=(const Scheduler&) = delete;

  // Tells it to end and waits, at most `limit`. True if it and all workers have ended; if not, the
  // process must end without destroying what they use. Nobody lists folders any more by then, or a
  // worker that waits for its listing holds this up to the limit.
  bool Stop(std::chrono::milliseconds limit);

 private:
  std::shared_ptr<SchedulerContext> context_;
  std::unique_ptr<Thread> thread_;
};

// One task from BeginRun to EndRun on the calling worker thread; returns its result code. At the
// end it tells TaskEnded and SaveNeeded. When memory or another resource runs out, the task ends
// Failed with result::kNotEncodable.
int RunTransferWorker(SchedulerContext& context, const TaskPointer& task);

}  // namespace updown
