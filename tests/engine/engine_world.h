#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine/scheduler.h"
#include "engine/session.h"
#include "engine/task_store.h"
#include "platform/event.h"
#include "tests/support/service_world.h"

namespace updown::test {

inline std::string Pattern(std::size_t size, std::size_t seed = 1) {
  std::string bytes(size, '\0');
  for (char& byte : bytes) {
    seed = (seed * 1664525U + 1013904223U) & 0xFFFFFFFFU;
    byte = static_cast<char>(seed >> 24U);
  }
  return bytes;
}

inline peer::Options Dialect(int dialect, std::uint32_t blockLength = 4096) {
  peer::Options options;
  options.dialect = dialect;
  options.blockLength = blockLength;
  return options;
}

// What the engine tells, kept for the test, which looks at it while it holds the lock.
class Told : public EngineEvents {
 public:
  void TaskStarted(TaskId task) noexcept override {
    Keep([&] { started.push_back(task); });
  }
  void BlockDone(TaskId /*task*/) noexcept override {
    Keep([&] { ++blocks; });
  }
  void TaskWaiting(TaskId /*task*/) noexcept override {
    Keep([&] { ++waits; });
  }
  void TaskEnded(TaskId task, const TransferResult& result) noexcept override {
    Keep([&] {
      outcomes.emplace_back(task, result.code);
      last = result;
    });
  }
  void SaveNeeded() noexcept override {
    Keep([&] { ++saves; });
  }

  // Waits until `done` holds, looking again at all that is told and every few milliseconds. False
  // if `limit` passes first.
  bool Until(const std::function<bool()>& done,
             std::chrono::milliseconds limit = std::chrono::seconds(20)) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    std::unique_lock lock(mutex_);
    while (!done()) {
      if (std::chrono::steady_clock::now() > deadline) {
        return false;
      }
      changed_.wait_for(lock, std::chrono::milliseconds(5));
    }
    return true;
  }

  std::vector<TaskId> started;                   // in the order of their notices
  std::vector<std::pair<TaskId, int>> outcomes;  // of workers that have ended
  TransferResult last;
  int blocks = 0;
  int waits = 0;
  int saves = 0;

 private:
  template <typename Change>
  void Keep(Change change) {
    const std::lock_guard lock(mutex_);
    change();
    changed_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable changed_;
};

// A service, and an engine that tells the test.
class EngineWorld : public ServiceWorld {
 public:
  explicit EngineWorld(peer::Options options = {}) : ServiceWorld(std::move(options)) {
    session.Open(AskedBy::Program, [](const SessionResult&) {});
    granted.WaitFor(std::chrono::seconds(20));
    Renew(std::chrono::milliseconds(1));
  }
  ~EngineWorld() { End(); }
  EngineWorld(const EngineWorld&) = delete;
  EngineWorld& operator=(const EngineWorld&) = delete;

  // Queue, records and context as at the program's start.
  void Renew(std::chrono::milliseconds pace) {
    context = std::make_shared<SchedulerContext>();
    context->queue = std::make_shared<TaskQueue>();
    context->events = told;
    context->session = &session;
    context->service = &service;
    context->pace = pace;
    context->reconnectDelays = {std::chrono::milliseconds(1), std::chrono::milliseconds(2)};
    store.emplace(context->queue, launch);
  }
  void Start() { scheduler.emplace(context); }
  bool End(std::chrono::milliseconds limit = std::chrono::seconds(2)) {
    session.Stop(limit);
    return !scheduler || scheduler->Stop(limit);
  }

  TaskPointer Fetch(const std::string& name, bool keep = true) {
    auto task = store->AddDownload({name, "/" + name, "fileservice", 8080}, local.File(name), keep);
    context->schedulerWake.Set();
    return task;
  }
  // Puts a folder record into the list, and a child for `inFlight` unless that is empty; restores.
  TaskPointer RestoreFolder(const std::string& remotePath, const std::string& localPath,
                            const std::string& inFlight = {}) {
    StoredRecord folder;
    folder.recordId = 1;
    folder.isFolder = 1;
    folder.paths = {remotePath, localPath};
    store->AddStoredRecord(std::make_shared<TransferRecord>(folder));
    if (!inFlight.empty()) {
      StoredRecord child;
      child.recordId = 2;
      child.parentRecordId = 1;
      child.paths = {remotePath + "/" + inFlight, localPath + "/" + inFlight};
      store->AddStoredRecord(std::make_shared<TransferRecord>(child));
    }
    TaskId restored = 0;
    store->RestoreTasks([&](TaskId task) { restored = task; });
    context->schedulerWake.Set();
    return store->Find(restored);
  }
  void Run(const TaskPointer& task) {
    store->Resume(task->id);
    context->schedulerWake.Set();
  }
  void Redo(const TaskPointer& task) {
    store->Redo(task->id);
    context->schedulerWake.Set();
  }
  void Pause(const TaskPointer& task) {
    store->Pause(task->id);
    context->schedulerWake.Set();
  }
  bool WaitForState(const TransferTask& task, TransferState state) {
    return told->Until([&] { return task.record->state == state && !task.Running(); });
  }

  // Nobody waits for its answers on the main thread.
  Event granted;
  Session session{service, launch, [](const std::function<void()>&) {}, nullptr,
                  [this] { granted.Set(); }};
  std::shared_ptr<Told> told = std::make_shared<Told>();
  std::shared_ptr<SchedulerContext> context;
  std::optional<TaskStore> store;
  std::optional<Scheduler> scheduler;
};

}  // namespace updown::test
