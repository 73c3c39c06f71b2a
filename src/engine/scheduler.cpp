#include "engine/scheduler.h"

#include <algorithm>
#include <latch>
#include <optional>
#include <utility>
#include <vector>

namespace updown {
namespace {

using WorkerSlot = std::unique_ptr<Thread>;

// Frees the slots of workers that have ended and moves the others to the front; returns their
// number.
std::size_t CloseUpSlots(SchedulerContext& context) {
  auto& slots = context.workerThreads;
  for (WorkerSlot& slot : slots) {
    if (slot && slot->Ended().IsSet()) {
      slot.reset();
    }
  }
  const auto firstFree = std::stable_partition(
      slots.begin(), slots.end(), [](const WorkerSlot& slot) { return slot != nullptr; });
  return static_cast<std::size_t>(firstFree - slots.begin());
}

// Waits for the exit, a wake, the end of a worker or, while none runs, the idle time. False on
// exit. A worker that has ended since the last look at the queue still has its slot, so that its
// end is seen here and leads to another look.
bool WaitForWork(SchedulerContext& context) {
  std::array<const Event*, 2 + kWorkerSlots> events{&context.schedulerExit, &context.schedulerWake};
  std::size_t count = 2;
  for (const WorkerSlot& slot : context.workerThreads) {
    if (slot) {
      events[count++] = &slot->Ended();
    }
  }
  std::optional<std::chrono::milliseconds> timeout;
  if (count == 2) {
    timeout = kIdleWait;
  }
  const auto ended = WaitForAny({events.data(), count}, timeout);
  if (ended == 0U) {
    return false;
  }
  if (ended == 1U) {
    // Before the look at the queue: a wake from now on asks for another look.
    context.schedulerWake.Reset();
  }
  return true;
}

// The worker waits until its start has been told, so that its end cannot be told before it.
WorkerSlot StartWorker(const std::shared_ptr<SchedulerContext>& context, const TaskPointer& task) {
  const auto announced = std::make_shared<std::latch>(1);
  WorkerSlot worker = context->startThread([context, task, announced] {
    announced->wait();
    RunTransferWorker(*context, task);
  });
  if (worker) {
    context->events->TaskStarted(task->id);
  }
  announced->count_down();
  return worker;
}

// Puts runnable tasks into free slots. A thread that the system refuses ends the pass: the task
// stays Queued for the next one.
void StartRunnableTasks(const std::shared_ptr<SchedulerContext>& context) {
  for (std::size_t slot = CloseUpSlots(*context); slot < kWorkerSlots; ++slot) {
    const TaskPointer task = context->queue->NextRunnableTask();
    if (!task) {
      return;
    }
    task->BeginRun();
    context->workerThreads[slot] = StartWorker(context, task);
    if (!context->workerThreads[slot]) {
      task->EndRun();
      return;
    }
  }
}

bool WorkersHaveEnded(const SchedulerContext& context) {
  return std::all_of(context.workerThreads.begin(), context.workerThreads.end(),
                     [](const WorkerSlot& slot) { return !slot || slot->Ended().IsSet(); });
}

void EndWorkers(SchedulerContext& context) {
  context.schedulerWake.Set();
  context.queue->StopRunningTasks();
  context.workersStop.Set();
  context.connections.CutAll();
  const auto deadline = std::chrono::steady_clock::now() + kExitWait;
  for (const WorkerSlot& slot : context.workerThreads) {
    if (slot) {
      const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
          deadline - std::chrono::steady_clock::now());
      slot->Ended().WaitFor(std::max(left, std::chrono::milliseconds::zero()));
    }
  }
}

}  // namespace

void SchedulerThread(const std::shared_ptr<SchedulerContext>& context) {
  if (!context) {
    return;
  }
  while (WaitForWork(*context)) {
    StartRunnableTasks(context);
  }
  EndWorkers(*context);
}

Scheduler::Scheduler(std::shared_ptr<SchedulerContext> context) : context_(std::move(context)) {
  thread_ = Thread::Start([shared = context_] { SchedulerThread(shared); });
}

Scheduler::~Scheduler() { context_->schedulerExit.Set(); }

bool Scheduler::Stop(std::chrono::milliseconds limit) {
  context_->schedulerExit.Set();
  return !thread_ || (thread_->Ended().WaitFor(limit) && WorkersHaveEnded(*context_));
}

}  // namespace updown
