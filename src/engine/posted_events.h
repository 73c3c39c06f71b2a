#pragma once

#include <memory>
#include <mutex>
#include <unordered_set>

#include "engine/engine_events.h"
#include "platform/posted_calls.h"

namespace updown {

// Hands what the engine tells over to the main thread, in its order. Blocks of one task that wait
// there become one; nothing else is left out. Threads of the engine may hold it beyond the end of
// the queue: what they tell is dropped then.
class PostedEvents final : public EngineEvents {
 public:
  // `receiver` is called on the queue's thread and must live until the queue is closed.
  PostedEvents(std::shared_ptr<PostedCalls> calls, EngineEvents& receiver);

  void TaskStarted(TaskId task) noexcept override;
  void BlockDone(TaskId task) noexcept override;
  void TaskWaiting(TaskId task) noexcept override;
  void TaskEnded(TaskId task, const TransferResult& result) noexcept override;
  void SaveNeeded() noexcept override;

 private:
  // The tasks whose last block waits to be told.
  struct WaitingBlocks {
    std::mutex mutex;
    std::unordered_set<TaskId> tasks;
  };

  const std::shared_ptr<PostedCalls> calls_;
  EngineEvents& receiver_;
  const std::shared_ptr<WaitingBlocks> waiting_ = std::make_shared<WaitingBlocks>();
};

}  // namespace updown
