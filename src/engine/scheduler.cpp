#include "engine/scheduler.h"

#include <algorithm>
#include <latch>
#include <optional>
#include <utility>
#include <vector>

#include "engine/folder_walk.h"
#include "engine/worker.h"

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
  Event& news = context.queue->News();
  std::vector<const Event*> events{&context.schedulerExit, &context.schedulerWake, &news};
  const std::size_t others = events.size();
  for (const Slot& slot : context.slots) {
    if (slot.worker) {
      events.push_back(&slot.worker->Ended());
    }
  }
  if (context.ending) {
    events.push_back(&context.ending->Ended());
  }
  std::optional<milliseconds> timeout = CutWhatIsDue(context);
  if (events.size() == others) {
    timeout = kIdleWait;
  }
  const bool goesOn = WaitForAny(events, timeout) != 0U;
  // Before the look at the queue: a wake from now on asks for another look.
  context.schedulerWake.Reset();
  news.Reset();
  return goesOn;
}

// Whatever the session and the workers do: this asks the service nothing.
void EndWhatHasNoWorker(SchedulerContext& context) {
  if (context.ending && context.ending->Ended().IsSet()) {
    context.ending.reset();
  }
  if (!context.ending && context.queue->HasEndings()) {
    context.ending = context.startThread([queue = context.queue] { queue->EndRuns(); });
  }
}

// The first worker of a task waits until its start has been told, so that its end cannot be told
// before it.
Slot StartTask(const std::shared_ptr<SchedulerContext>& context, const TaskPointer& task) {
  const auto announced = std::make_shared<std::latch>(1);
  const auto walk = task->isFolder ? std::make_shared<FolderWalk>(*context, task) : nullptr;
  auto worker = context->startThread([context, task, walk, announced] {
    announced->wait();
    walk ? walk->Work() : RunTransferWorker(*context, task);
  });
  if (worker) {
    context->events->TaskStarted(task->id);
  }
  announced->count_down();
  return {std::move(worker), task, walk};
}

Slot StartHelper(const std::shared_ptr<SchedulerContext>& context, const Slot& first) {
  return {context->startThread([context, walk = first.walk] { walk->Work(); }), first.task,
          first.walk};
}

std::size_t SlotsOf(const SchedulerContext& context, const FolderWalk& walk) {
  return static_cast<std::size_t>(std::ranges::count(context.slots, &walk, [](const Slot& slot) {
    return static_cast<const FolderWalk*>(slot.walk.get());
  }));
}

// Of the folders that have use for one more worker the one with the fewest.
const Slot* FolderInNeed(const SchedulerContext& context) {
  const Slot* chosen = nullptr;
  std::size_t fewest = FolderWalk::kWorkers;
  for (const Slot& slot : context.slots) {
    const std::size_t present = slot.walk ? SlotsOf(context, *slot.walk) : fewest;
    if (present < fewest && slot.walk->WantedWorkers() > present) {
      chosen = &slot;
      fewest = present;
    }
  }
  return chosen;
}

bool IsHeader(const TransferTask& task) { return task.record->keepAcrossRestart == 0; }

bool HeadersToo(const SchedulerContext& context) {
  const auto headers =
      std::count_if(context.slots.begin(), context.slots.end(),
                    [](const Slot& slot) { return slot.task && IsHeader(*slot.task); });
  return static_cast<std::size_t>(headers) < kHeaderSlots;
}

// Behind the run's begin the state counts: who stops the task from now on finds the run. An empty
// slot: the task was stopped, or something else has begun a run, or the system has refused the
// thread, and then `refused` is set.
Slot Begin(const std::shared_ptr<SchedulerContext>& context, const TaskPointer& task,
           bool& refused) {
  if (!task->BeginRun(&context->connections)) {
    return {};
  }
  const bool runs = task->record->state == TransferState::Queued;
  Slot slot = runs ? StartTask(context, task) : Slot{};
  if (slot.worker) {
    return slot;
  }
  task->EndRun();
  refused = runs;
  refused ? context->queue->PutBack(task) : context->queue->MakeReady(task->id);
  return {};
}

// What a free slot is for. Empty: there is nothing, or the system has refused the thread.
Slot StartNext(const std::shared_ptr<SchedulerContext>& context) {
  for (bool refused = false; !refused;) {
    TaskPointer task = context->queue->NextRunnableTask(false);
    const Slot* const folder = task ? nullptr : FolderInNeed(*context);
    if (folder != nullptr) {
      return StartHelper(context, *folder);
    }
    if (!task && HeadersToo(*context)) {
      task = context->queue->NextRunnableTask(true);
    }
    if (!task) {
      break;
    }
    if (Slot slot = Begin(context, task, refused); slot.worker) {
      return slot;
    }
  }
  return {};
}

// Fills the free slots. What the system refuses a thread for waits for the next pass.
void StartRunnableTasks(const std::shared_ptr<SchedulerContext>& context) {
  EndWhatHasNoWorker(*context);
  std::size_t used = CloseUpSlots(*context);
  context->slotWanted = false;
  if (context->session->Key().grant == 0) {
    return;
  }
  while (used < kWorkerSlots) {
    Slot slot = StartNext(context);
    if (!slot.worker) {
      return;
    }
    context->slots[used++] = std::move(slot);
  }
  context->slotWanted = context->queue->UserTaskWaits();
}

bool WorkersHaveEnded(const SchedulerContext& context) {
  return std::all_of(
             context.slots.begin(), context.slots.end(),
             [](const Slot& slot) { return !slot.worker || slot.worker->Ended().IsSet(); }) &&
         (!context.ending || context.ending->Ended().IsSet());
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
  EndWhatHasNoWorker(context);
  const auto deadline = std::chrono::steady_clock::now() + kExitWait;
  const auto awaitEnd = [deadline](const Thread& thread) {
    const auto left =
        std::chrono::duration_cast<milliseconds>(deadline - std::chrono::steady_clock::now());
    thread.Ended().WaitFor(std::max(left, milliseconds::zero()));
  };
  for (const Slot& slot : context.slots) {
    if (slot.worker) {
      awaitEnd(*slot.worker);
    }
  }
  if (context.ending) {
    awaitEnd(*context.ending);
  }
  EndWhatHasNoWorker(context);  // what came while that thread was leaving
  if (context.ending) {
    awaitEnd(*context.ending);
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
