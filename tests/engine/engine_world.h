#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine/frame_messages.h"
#include "engine/scheduler.h"
#include "engine/session.h"
#include "engine/task_store.h"
#include "peer/stand_in.h"
#include "platform/text.h"
#include "resources/string_id.h"
#include "tests/support/environment.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/window_pump.h"

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

// A stand-in service, an engine, and a frame that is a plain function pumped by the test.
class EngineWorld {
 public:
  explicit EngineWorld(peer::Options options = {}) : peer(Serve(std::move(options))) {
    context->queue = std::make_shared<TaskQueue>();
    context->service = &service;
    context->pace = std::chrono::milliseconds(1);
    launch.serverName = "fileservice";
    frame = pump.MakeWindow([this](const WindowMessage& message) { return Handle(message); });
    session.OpenSharedSession();
    store.emplace(context->queue, launch);
  }
  ~EngineWorld() { End(); }
  EngineWorld(const EngineWorld&) = delete;
  EngineWorld& operator=(const EngineWorld&) = delete;

  void Start() { scheduler.emplace(context); }
  bool End(std::chrono::milliseconds limit = std::chrono::seconds(2)) {
    pump.DestroyWindow(frame);
    return !scheduler || scheduler->Stop(limit);
  }

  TaskPointer Fetch(const std::string& name, bool keep = true) {
    auto task = store->AddDownload({name, "/" + name, session.Sessid(), "fileservice", 8080},
                                   local.File(name), keep, frame);
    context->schedulerWake.Set();
    return task;
  }
  // Puts a folder record into the chain, and a child for `inFlight` unless that is empty; restores.
  TaskPointer RestoreFolder(const std::string& remotePath, const std::string& localPath,
                            const std::string& inFlight = {}) {
    StoredRecord folder;
    folder.recordId = 1;
    folder.isFolder = 1;
    folder.paths = {remotePath, localPath};
    store->Records().Append(std::make_shared<TransferRecord>(folder));
    if (!inFlight.empty()) {
      StoredRecord child;
      child.recordId = 2;
      child.parentRecordId = 1;
      child.paths = {remotePath + "/" + inFlight, localPath + "/" + inFlight};
      store->Records().Append(std::make_shared<TransferRecord>(child));
    }
    store->RestoreTasks(session.Sessid(), frame);
    TaskId restored = 0;
    context->queue->ForEach([&](const TransferTask& task) { restored = task.id; });
    context->schedulerWake.Set();
    return store->Find(restored);
  }
  void Run(const TaskPointer& task) {
    task->record->state = TransferState::Queued;
    task->ClearRunning();
    context->schedulerWake.Set();
  }
  bool WaitForState(const TransferTask& task, TransferState state) {
    return pump.RunUntil([&] { return task.record->state == state && !task.WorkerActive(); });
  }
  long Count(std::uint32_t message) const {
    const auto requests = peer.Requests();
    return std::count_if(requests.begin(), requests.end(),
                         [message](const auto& seen) { return seen.message == message; });
  }

  TemporaryFolder served;
  TemporaryFolder local;
  peer::StandIn peer;
  ScopedEnvironment environment{peer.Environment()};
  LaunchState launch;
  FileService service;
  SharedSession session{service, launch, nullptr};
  WindowPump pump;
  WindowHandle frame;
  std::vector<TaskId> started;                         // in the order of their notices
  std::vector<std::pair<TaskId, LongParam>> outcomes;  // of workers that have ended
  std::shared_ptr<SchedulerContext> context = std::make_shared<SchedulerContext>();
  std::optional<TaskStore> store;
  std::optional<Scheduler> scheduler;

 private:
  peer::Options Serve(peer::Options options) const {
    options.root = served.Path();
    return options;
  }

  MessageResult Handle(const WindowMessage& message) {
    if (message.number == frame_message::kTaskResult) {
      if (message.lParam == static_cast<LongParam>(StringId::Processing)) {
        started.push_back(message.wParam);
      } else {
        outcomes.emplace_back(message.wParam, message.lParam);
      }
    } else if (message.number == frame_message::kListFolder) {
      const auto& path = *PointerFrom<const std::u16string>(message.lParam);
      auto listing = service.Ops().ListFolder(session.Socket(), WideToUtf8(path));
      if (!listing.chain.Empty()) {
        return PointerParam(std::make_unique<DirectoryList>(std::move(listing.chain)).release());
      }
    }
    return 0;
  }
};

}  // namespace updown::test
