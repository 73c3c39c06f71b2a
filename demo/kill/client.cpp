// The engine without windows, as the program runs it, at a mad pace: kill_rounds and soak kill it.
//
//   kill_client FOLDER SEED MANNER   adds, pauses, resumes and deletes tasks and saves all the time
//   kill_client FOLDER 0 MANNER      fetches all there is to its end
//
// MANNER: "kills" does so as fast as it can; "soak" gives tasks the time to come to something, and
// redoes, deletes with what lies on disk, fetches again. SIGTERM brings it to its regular end.
//
// Says "saved PATH..." when a save is on disk, "added PATH" before it makes a task, and "removed
// PATH" before it deletes one or has it start over.
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
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

constexpr std::chrono::seconds kPatience{60};

volatile std::sig_atomic_t endWanted = 0;

void Say(const std::string& line) {
  const std::string bytes = line + "\n";
  // In one piece, or not at all.
  [[maybe_unused]] const ssize_t written = write(STDOUT_FILENO, bytes.data(), bytes.size());
}

class KilledClient : private EngineEvents {
 public:
  KilledClient(const std::string& folder, std::uint32_t seed, bool soak)
      : folder_(folder),
        soak_(soak),
        things_(ReadThings(folder)),
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
    context_->pace = std::chrono::milliseconds(soak ? 5 : 1);
    if (soak) {
      context_->reconnectDelays.assign(6, std::chrono::milliseconds(300));
    }
    store_.emplace(context_->queue, launch_);
    cache_.RemoveUnfinished();
    for (const auto& record : RestoredRecords(LoadTaskList(folder + "/list"), cache_)) {
      store_->AddStoredRecord(record);
    }
    context_->events = std::make_shared<PostedEvents>(calls_, static_cast<EngineEvents&>(*this));
  }

  void Start() {
    do {  // the service may be away
      session_.Open(AskedBy::Program, [](const SessionResult&) {});
    } while (!granted_.WaitFor(std::chrono::milliseconds(500)) && endWanted == 0);
    store_->RestoreTasks([](TaskId) {});
    const std::unordered_set<std::string> cached = cache_.Names();
    for (const Thing& thing : things_) {
      if (!thing.IsUsers() && !cached.contains(thing.name)) {
        Add(thing, cache_.BeginFetch(thing.name));
      }
    }
    scheduler_.emplace(context_);
    context_->schedulerWake.Set();
  }

  void RunUntilTold() {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (endWanted == 0 && std::chrono::steady_clock::now() < end) {
      soak_ ? DoSomethingOfSoak() : DoSomething();
      calls_->Run();
      saver_.Save(KeptRecords(store_->Records(), cache_));
      std::this_thread::sleep_for(std::chrono::microseconds(dice_() % (soak_ ? 10000 : 100)));
    }
  }

  // True if all went well.
  bool End() {
    // Before the stop: what runs is stored as waiting, and goes on by itself at the next start.
    saver_.Save(KeptRecords(store_->Records(), cache_));
    const bool stopped = scheduler_->Stop(kPatience);
    cache_.RemoveUnfinished();
    return saver_.Finish(std::chrono::steady_clock::now() + kPatience) && stopped;
  }

  bool Finish() {
    for (const Thing& thing : things_) {
      AddForUser(thing);
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
    return AllFinished() && End();
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

  void Add(const Thing& thing, const std::string& target) {
    const TaskDraft draft{thing.name, thing.Remote(), "fileservice", 8080};
    if (thing.kind == Thing::Kind::Folder) {
      store_->AddFolderDownload(draft, target);
    } else {
      store_->AddDownload(draft, target, thing.IsUsers());
    }
    context_->schedulerWake.Set();
  }

  void AddForUser(const Thing& thing) {
    const std::string target = thing.Local(folder_);
    if (thing.IsUsers() && !deleted_.contains(thing.Remote()) &&
        !store_->IsDuplicate(thing.Remote()) && !store_->IsTargetInUse(target)) {
      Say("added " + thing.Remote());
      Add(thing, target);
    }
  }

  void AddAny() { AddForUser(things_[dice_() % things_.size()]); }

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
      AddAny();
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
      Say("removed " + task->record->RemotePath());
      store_->RemoveTask(task->id);
    }
  }

  void DoSomethingOfSoak() {
    const TaskPointer task = AnyUserTask();
    const auto what = static_cast<std::uint32_t>(dice_() % 100);
    if (what < 30 || !task) {
      AddAny();
    } else if (what < 40) {
      store_->Pause(task->id);
    } else if (what < 80) {
      const TransferState state = task->record->state;
      if (state == TransferState::Stopped || state == TransferState::Failed) {
        store_->Resume(task->id);
      }
    } else if (what < 90) {
      Say("removed " + task->record->RemotePath());
      if (what < 84) {
        store_->Redo(task->id);
      } else {
        store_->RemoveTask(task->id, TaskStore::LocalFiles::Remove);
      }
    }
    context_->schedulerWake.Set();
  }

  bool AllFinished() const {
    bool all = true;
    context_->queue->ForEach([&all](const TransferTask& task) {
      all = all && task.record->state == TransferState::Finished && !task.Running();
    });
    return all;
  }

  const std::string folder_;
  const bool soak_;
  const Things things_;
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
  // Never added again, as what they left on disk stays. Not used by the soak.
  std::set<std::string> deleted_;
  TaskListSaver saver_;
};

}  // namespace
}  // namespace updown::demo

using updown::demo::endWanted;
using updown::demo::KilledClient;

int main(int argc, char** argv) {
  if (argc != 4) {
    return 2;
  }
  signal(SIGTERM, [](int) { endWanted = 1; });
  const auto seed = static_cast<std::uint32_t>(std::strtoul(argv[2], nullptr, 10));
  KilledClient client(argv[1], seed, std::string(argv[3]) == "soak");
  client.Start();
  if (seed == 0) {
    return client.Finish() ? 0 : 1;
  }
  client.RunUntilTold();
  return client.End() ? 0 : 1;
}
