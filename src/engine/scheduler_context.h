#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <vector>

#include "engine/engine_events.h"
#include "engine/task_queue.h"
#include "engine/worker_session.h"
#include "platform/event.h"
#include "platform/thread.h"
#include "service/limits.h"
#include "service/operations.h"
#include "wire/sockets.h"

namespace updown {

class FolderWalk;

inline constexpr std::size_t kWorkerSlots = 10;
// From the request of one block to that of the next of the same file.
inline constexpr std::chrono::milliseconds kPace{1000};

// What window, scheduler and workers share. Held by shared_ptr, because a worker that is stuck in
// the system outlives the window until the process ends.
struct SchedulerContext {
  struct Slot {
    std::unique_ptr<Thread> worker;
    TaskPointer task;
    std::shared_ptr<FolderWalk> walk;  // of a folder task, which has several slots
  };

  std::shared_ptr<TaskQueue> queue;
  std::shared_ptr<EngineEvents> events;
  Event schedulerExit;
  Event schedulerWake;                   // "look again", no more, beside the queue's own news
  std::array<Slot, kWorkerSlots> slots;  // the scheduler's alone
  std::unique_ptr<Thread> ending;        // likewise: ends runs without a worker
  // A task of the user's finds no free slot: one of a folder's workers, if there are several, is to
  // leave.
  std::atomic<bool> slotWanted{false};

  const FileService* service = nullptr;  // outlives all threads
  WorkerSession* session = nullptr;      // so does it; stopped before the scheduler
  SocketGroup connections;               // of all workers; cut at exit
  ThreadStarter startThread = &Thread::Start;
  std::chrono::milliseconds pace = kPace;
  std::chrono::milliseconds silence = kTransferSilence;  // a transfer: without a further byte
  // Before each new connection for one that was lost in mid-transfer; then the task fails.
  std::vector<std::chrono::milliseconds> reconnectDelays{
      std::chrono::seconds(2), std::chrono::seconds(4), std::chrono::seconds(8),
      std::chrono::seconds(16), std::chrono::seconds(30)};
};

}  // namespace updown
