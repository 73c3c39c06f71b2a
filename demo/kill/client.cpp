// The engine without windows, as the program runs it, at a mad pace: kill_rounds kills it.
//
//   kill_client FOLDER SEED   adds, pauses, resumes and deletes tasks and saves all the time
//   kill_client FOLDER 0      fetches all files to their end
//
// Says "saved PATH..." when a save is on disk, and "deleted PATH" before it deletes a task.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <unordered_set>

#include "demo/kill/world.h"
#include "engine/engine_events.h"
#include "engine/kept_tasks.h"
#include "engine/posted_events.h"
#include "engine/scheduler.h"
#include "engine/session.h"
#include "engine/task_list_saver.h"
#include "engine/task_store.h"
#include "localdata/tasklist.h"
#include "platform/event.h"
#include "platform/posted_calls.h"
#include "platform/text.h"

namespace updown::demo {
namespace {

constexpr std::chrono::seconds kPatience{20};

void Say(const std::string& line) {
  const std::string bytes = line + "\n";
  // In one piece, or not at all.
  [[maybe_unused]] const ssize_t written = write(STDOUT_FILENO, bytes.data(), bytes.size());
}

class KilledClient : private EngineEvents {
 public:
  KilledClient(const std::string& folder, std::uint32_t seed)
      : folder_(folder),
        dice_(seed),
        cache_(folder + "/cache"),
        saver_(
            [list = folder + "/list"](std::span<const StoredRecord> records) {
              const int error = SaveTaskList(records, list);
              std::string saved = "saved";
              for (const StoredRecord& record : records) {
                saved += " " + record.paths.remotePath;
              }
              if (error == 0) {
                Say(saved);
              }
              return error;
            },
            nullptr, std::chrono::milliseconds(1)) {
    launch_.serverName = "fileservice";
    context_->queue = std::make_shared<TaskQueue>();
    context_->service = &service_;
    context_->session = &session_;
    context_->pace = std::chrono::milliseconds(1);
    store_.emplace(context_->queue, launch_);
    cache_.RemoveUnfinished();
    for (const auto& record : RestoredRecords(LoadTaskList(folder + "/list"), cache_)) {
      store_->AddStoredRecord(record);
    }
    context_->events = std::make_shared<PostedEvents>(calls_, static_cast<EngineEvents&>(*this));
  }

  void Start() {
    session_.Open(AskedBy::Program, [](const SessionResult&) {});
    granted_.WaitFor(kPatience);
    store_->RestoreTasks([](TaskId) {});
    const std::unordered_set<std::string> cached = cache_.Names();
    for (int n = 0; n < kHeaders; ++n) {
      if (!cached.contains(Header(n))) {
        Add(Header(n), cache_.BeginFetch(Header(n)), false);
      }
    }
    scheduler_.emplace(context_);
    context_->schedulerWake.Set();
  }

  void RunUntilKilled() {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (std::chrono::steady_clock::now() < end) {
      DoSomething();
      calls_->Run();
      saver_.Save(KeptRecords(store_->Records(), cache_));
      std::this_thread::sleep_for(std::chrono::microseconds(dice_() % 100));
    }
  }

  // True if all went well.
  bool Finish() {
    for (int n = 0; n < kUserFiles; ++n) {
      AddUserFile(n);
    }
    std::vector<TaskId> all;
    context_->queue->ForEach([&all](const TransferTask& task) { all.push_back(task.id); });
    for (const TaskId task : all) {
      store_->Resume(task);
    }
    context_->schedulerWake.Set();
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (!AllFinished() && std::chrono::steady_clock::now() < end) {
      calls_->Run();
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    calls_->Run();
    saver_.Save(KeptRecords(store_->Records(), cache_));
    const bool stopped = scheduler_->Stop(kPatience);
    cache_.RemoveUnfinished();
    return saver_.Finish(std::chrono::steady_clock::now() + kPatience) && stopped && AllFinished();
  }

 private:
  void TaskStarted(TaskId /*task*/) noexcept override {}
  void BlockDone(TaskId /*task*/) noexcept override {}
  void SaveNeeded() noexcept override {}
  void TaskWaiting(TaskId /*task*/) noexcept override {}
  void TaskEnded(TaskId id, const TransferResult& /*result*/) noexcept override {
    const TaskPointer task = store_->Find(id);
    if (task && task->record->keepAcrossRestart == 0 &&
        task->record->state == TransferState::Finished) {
      cache_.EndFetch(task->record->LocalPath());
    }
  }

  void Add(const std::string& name, const std::string& target, bool keep) {
    store_->AddDownload({name, "/" + name, "fileservice", 8080}, target, keep);
    context_->schedulerWake.Set();
  }

  void AddUserFile(int n) {
    const std::string path = "/" + UserFile(n);
    if (!deleted_.contains(path) && !store_->IsDuplicate(path)) {
      Add(UserFile(n), folder_ + "/got/" + UserFile(n), true);
    }
  }

  TaskPointer AnyUserTask() {
    std::vector<TaskId> ids;
    context_->queue->ForEach([&ids](const TransferTask& task) {
      if (task.record->keepAcrossRestart != 0) {
        ids.push_back(task.id);
      }
    });
    return ids.empty() ? nullptr : store_->Find(ids[dice_() % ids.size()]);
  }

  void DoSomething() {
    const TaskPointer task = AnyUserTask();
    const auto what = static_cast<std::uint32_t>(dice_() % 400);
    if (what < 12 || !task) {
      AddUserFile(static_cast<int>(dice_() % kUserFiles));
    } else if (what < 20) {
      store_->Pause(task->id);
      context_->schedulerWake.Set();
    } else if (what < 39) {
      if (task->record->state == TransferState::Stopped) {
        store_->Resume(task->id);
      }
      context_->schedulerWake.Set();
    } else if (what == 39 && task->record->state != TransferState::Finished) {
      deleted_.insert(task->record->RemotePath());
      Say("deleted " + task->record->RemotePath());
      store_->RemoveTask(task->id);
    }
  }

  bool AllFinished() const {
    bool all = true;
    context_->queue->ForEach([&all](const TransferTask& task) {
      all = all && task.record->state == TransferState::Finished && !task.Running();
    });
    return all;
  }

  const std::string folder_;
  std::minstd_rand dice_;
  LaunchState launch_;
  FileService service_;
  Event granted_;
  Session session_{service_, launch_, [](const std::function<void()>&) {}, nullptr,
                   [this] { granted_.Set(); }};
  const std::shared_ptr<PostedCalls> calls_ = std::make_shared<PostedCalls>([] {});
  PackageCache cache_;
  std::shared_ptr<SchedulerContext> context_ = std::make_shared<SchedulerContext>();
  std::optional<TaskStore> store_;
  std::optional<Scheduler> scheduler_;
  std::set<std::string> deleted_;  // never added again: an old save may still be on its way
  TaskListSaver saver_;
};

}  // namespace
}  // namespace updown::demo

int main(int argc, char** argv) {
  if (argc != 3) {
    return 2;
  }
  const auto seed = static_cast<std::uint32_t>(std::strtoul(argv[2], nullptr, 10));
  updown::demo::KilledClient client(argv[1], seed);
  client.Start();
  if (seed != 0) {
    client.RunUntilKilled();
    return 0;
  }
  return client.Finish() ? 0 : 1;
}
