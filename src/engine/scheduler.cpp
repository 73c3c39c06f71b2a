#include "engine/scheduler.h"

#include <algorithm>
#include <latch>
#include <optional>
#include <utility>
#include <vector>

namespace updown {
namespace {

using Slot = SchedulerContext::Slot;
using std::chrono::milliseconds;

// Frees the slots of workers that have ended and moves the others to the front; returns their
// number.
std::size_t CloseUpSlots(SchedulerContext& context) {
  auto& slots = context.slots;
  for (Slot& slot : slots) {
    if (slot.worker && slot.worker->Ended().IsSet()) {
      slot = {};
    }
  }
  const auto firstFree = std::stable_partition(
      slots.begin(), slots.end(), [](const Slot& slot) { return slot.worker != nullptr; });
  return static_cast<std::size_t>(firstFree - slots.begin());
}

// Cuts the paused runs whose block has taken too long; how long the next of them has left.
std::optional<milliseconds> CutWhatIsDue(const SchedulerContext& context) {
  std::optional<milliseconds> next;
  for (const Slot& slot : context.slots) {
    const auto run = slot.task ? slot.task->Run() : nullptr;
    const auto at = run ? run->CutAt() : std::nullopt;
    if (!at) {
      continue;
    }
    const auto left = std::chrono::ceil<milliseconds>(*at - TaskRun::Clock::now());
    if (left <= milliseconds::zero()) {
      run->Cut();
    } else {
      next = std::min(next.value_or(left), left);
    }
  }
  return next;
}

// Waits for the exit, a wake, the end of a worker, the time to cut one or, while none runs, the
// idle time. False on exit. A worker that has ended since the last look at the queue still has its
// slot, so that its end is seen here and leads to another look.
bool WaitForWork(SchedulerContext& context) {
  std::array<const Event*, 2 + kWorkerSlots> events{&context.schedulerExit, &context.schedulerWake};
  std::size_t count = 2;
  for (const Slot& slot : context.slots) {
    if (slot.worker) {
      events[count++] = &slot.worker->Ended();
    }
  }
  std::optional<milliseconds> timeout = CutWhatIsDue(context);
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
std::unique_ptr<Thread> StartWorker(const std::shared_ptr<SchedulerContext>& context,
                                    const TaskPointer& task) {
  const auto announced = std::make_shared<std::latch>(1);
  auto worker = context->startThread([context, task, announced] {
    announced->wait();
    RunTransferWorker(*context, task);
  });
  if (worker) {
    context->events->TaskStarted(task->id);
  }
  announced->count_down();
  return worker;
}

bool IsHeader(const TransferTask& task) { return task.record->keepAcrossRestart == 0; }

bool HeadersToo(const SchedulerContext& context) {
  const auto headers =
      std::count_if(context.slots.begin(), context.slots.end(),
                    [](const Slot& slot) { return slot.task && IsHeader(*slot.task); });
  return static_cast<std::size_t>(headers) < kHeaderSlots;
}

// Puts runnable tasks into free slots. A thread that the system refuses ends the pass: the task
// stays Queued for the next one.
void StartRunnableTasks(const std::shared_ptr<SchedulerContext>& context) {
  std::size_t free = CloseUpSlots(*context);
  while (free < kWorkerSlots && context->session->Key().grant != 0) {
    const TaskPointer task = context->queue->NextRunnableTask(HeadersToo(*context));
    if (!task) {
      return;
    }
    task->BeginRun(&context->connections);
    // Behind the run's begin: who stops the task from now on finds the run.
    if (task->record->state != TransferState::Queued) {
      task->EndRun();
      continue;
    }
    Slot& slot = context->slots[free];
    slot = {StartWorker(context, task), task};
    if (!slot.worker) {
      slot = {};
      task->EndRun();
      context->queue->MakeReady(task->id);
      return;
    }
    ++free;
  }
}

bool WorkersHaveEnded(const SchedulerContext& context) {
  return std::all_of(context.slots.begin(), context.slots.end(),
                     [](const Slot& slot) { return !slot.worker || slot.worker->Ended().IsSet(); });
}

void EndWorkers(SchedulerContext& context) {
  context.schedulerWake.Set();
  context.queue->StopRunningTasks();
  for (const Slot& slot : context.slots) {
    if (const auto run = slot.task ? slot.task->Run() : nullptr) {
      run->Cut();
    }
  }
  context.connections.CutAll();
  const auto deadline = std::chrono::steady_clock::now() + kExitWait;
  for (const Slot& slot : context.slots) {
    if (slot.worker) {
      const auto left =
          std::chrono::duration_cast<milliseconds>(deadline - std::chrono::steady_clock::now());
      slot.worker->Ended().WaitFor(std::max(left, milliseconds::zero()));
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
