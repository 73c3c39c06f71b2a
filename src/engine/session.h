#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <unordered_set>
#include <utility>

#include "engine/session_answers.h"
#include "engine/session_link.h"
#include "engine/session_requests.h"
#include "engine/worker_session.h"
#include "platform/thread.h"

namespace updown {

// The one long-lived session on whose connection all browsing runs, with a thread of its own.
// Requests run one at a time, in the order of asking.
//
// Made, asked and ended on the main thread, but for what WorkerSession says. Each request is
// answered once, by a call on the main thread, or never if it was dropped first; no answer comes
// from within the call that asks.
class Session final : public WorkerSession {
 public:
  using RequestId = std::uint64_t;  // never reused

  // Hands a call to the main thread, in order. Called on any thread.
  using Post = std::function<void(std::function<void()>)>;
  // Called on the session's thread each time the service has granted a session.
  using Granted = std::function<void()>;

  // `service` and `launch` outlive the object. `question` is asked on the main thread.
  Session(FileService& service, const LaunchState& launch, Post post, LoginQuestion question,
          Granted granted, SessionLimits limits = {});
  ~Session() override;  // waits for the thread's end, which is at hand once it is cut
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // Opens the session unless it is open.
  RequestId Open(AskedBy by, std::function<void(const SessionResult&)> answer);
  RequestId ListFolder(std::string path, ListAgain again, AskedBy by,
                       std::function<void(ListingAnswer)> answer);

  using ChangeDone = std::function<void(const ChangeAnswer&)>;
  RequestId RemoveFile(std::string path, ChangeDone answer);
  RequestId RemovePackage(std::string path, ChangeDone answer);
  RequestId Rename(FolderRename rename, ChangeDone answer);

  // No answer comes once this has returned. A request that has not begun is not sent either; one
  // that is under way runs to its end.
  void Drop(RequestId request);

  // Answers all that waits with Cancelled, then cuts what is under way, which is answered so behind
  // it. Workers' requests go on.
  void Cancel();

  // True while an answer is to come.
  bool Busy() const { return !awaited_->empty(); }

  // Cuts and ends the thread, and lets waiting workers go; no answer comes once this has returned.
  // False if the thread has not ended within `limit`: the process must then end without destroying
  // the session and what it uses.
  bool Stop(std::chrono::milliseconds limit);

  SessionKey Key() const override;
  std::optional<SessionKey> Renew(const SessionKey& refused, std::stop_token stop) override;
  ListingAnswer List(const std::string& path, std::stop_token stop) override;

 private:
  using Awaited = std::unordered_set<RequestId>;  // main thread
  struct Job {
    RequestId id = 0;  // 0: a worker's
    std::function<void(SessionLink&)> run;
    std::function<void()> cancelled;  // answers instead; of the main thread's requests
    const void* asker = nullptr;      // what a worker's listing is for; compared, never followed
  };
  // What a worker, or the session itself at the login prompt, waits for; guarded by mutex_.
  template <typename Value>
  struct Reply {
    std::optional<Value> value;
  };
  using Renewal = Reply<std::optional<SessionKey>>;

  template <typename Answer, typename Work, typename Done>
  RequestId Ask(Work work, Done done);
  void Add(Job job);
  void Run();
  bool TakeJob(Job& job);
  std::optional<LoginAnswer> AskLogin(const LoginRequest& request);
  void TakeKey(const std::string& sessid);
  void RunRenewal(SessionLink& link, std::uint64_t refused,
                  const std::shared_ptr<Renewal>& renewal);
  bool Stopping() const;

  const Post post_;
  const LoginQuestion question_;
  const Granted granted_;

  const std::shared_ptr<Awaited> awaited_ = std::make_shared<Awaited>();
  RequestId lastId_ = 0;  // main thread

  mutable std::mutex mutex_;  // guards all that follows but the link and the thread
  std::condition_variable_any changed_;
  std::deque<Job> jobs_;
  RequestId running_ = 0;
  const void* runningFor_ = nullptr;
  bool asking_ = false;  // at the login prompt
  bool stopping_ = false;
  SessionKey key_;
  std::shared_ptr<Renewal> renewal_;  // under way or waiting, for all who hold its refused key

  SessionLink link_;
  std::unique_ptr<Thread> thread_;
};

}  // namespace updown
