#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
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

// What the engine tells, kept for the test, which looks at it in Until.
class Told : public EngineEvents {
 public:
  void TaskStarted(TaskId task) noexcept override {
    const std::lock_guard lock(mutex_);
    started.push_back(task);
  }
  void BlockDone(TaskId /*task*/) noexcept override {}
  void TaskWaiting(TaskId /*task*/) noexcept override {
    const std::lock_guard lock(mutex_);
    ++waits;
  }
  void TaskEnded(TaskId task, const TransferResult& result) noexcept override {
    const std::lock_guard lock(mutex_);
    outcomes.emplace_back(task, result.code);
    last = result;
  }
  void SaveNeeded() noexcept override {}

  // Waits until `done` holds. False if `limit` passes first.
  bool Until(const std::function<bool()>& done,
             std::chrono::milliseconds limit = std::chrono::seconds(20)) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    std::unique_lock lock(mutex_);
    while (!done()) {
      if (std::chrono::steady_clock::now() > deadline) {
        return false;
      }
      lock.unlock();
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      lock.lock();
    }
    return true;
  }

  std::vector<TaskId> started;                   // in the order of their notices
  std::vector<std::pair<TaskId, int>> outcomes;  // of workers that have ended
  TransferResult last;
  int waits = 0;

 private:
  std::mutex mutex_;
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
    return store->AddDownload({name, "/" + name, "fileservice", 8080}, local.File(name), keep);
  }
  // A file "f" with these bytes.
  TaskPointer ServeAndFetch(const std::string& bytes) {
    WriteFile(served.File("f"), bytes);
    return Fetch("f");
  }
  TaskPointer FetchFolder(const std::string& name) {
    return store->AddFolderDownload({name, "/" + name, "fileservice", 8080}, local.File(name));
  }
  // The service falls silent at this message; speaks again once so many wait for its answer.
  void Silence(std::uint32_t message) {
    peer.ForgetRequests();
    peer.AddFault({.kind = peer::Fault::Kind::Stall, .message = message, .times = 0});
  }
  bool WaitForSilence(std::uint32_t message, long workers = 1) {
    const bool silent = told->Until([&] { return Count(message) >= workers; });
    peer.ClearFaults();
    return silent;
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
