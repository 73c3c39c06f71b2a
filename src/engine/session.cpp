#include "engine/session.h"

#include <algorithm>
#include <iterator>
#include <type_traits>

namespace updown {
namespace {

template <typename Answer>
Answer CancelledAnswer() {
  constexpr SessionResult kCancelled{SessionResult::End::Cancelled};
  Answer answer;
  if constexpr (std::is_same_v<Answer, SessionResult>) {
    answer = kCancelled;
  } else {
    answer.result = kCancelled;
  }
  return answer;
}

}  // namespace

Session::Session(FileService& service, const LaunchState& launch, Post post, LoginQuestion question,
                 Granted granted, SessionLimits limits)
    : post_(std::move(post)),
      question_(std::move(question)),
      granted_(std::move(granted)),
      link_(
          service, launch, limits,
          [this](const LoginRequest& request) { return AskLogin(request); },
          [this](const std::string& sessid) { TakeKey(sessid); }),
      thread_(Thread::Start([this] { Run(); })) {}

Session::~Session() {
  constexpr std::chrono::hours kForEver{1};
  Stop(kForEver);
}

template <typename Answer, typename Work, typename Done>
Session::RequestId Session::Ask(Work work, Done done) {
  const RequestId id = ++lastId_;
  awaited_->insert(id);
  const auto tell = [this, id, done = std::move(done)](Answer answer) {
    post_([id, done, answer = std::move(answer), awaited = std::weak_ptr(awaited_)] {
      const auto still = awaited.lock();
      if (still && still->erase(id) != 0) {
        done(answer);
      }
    });
  };
  Add({id, [tell, work = std::move(work)](SessionLink& link) { tell(work(link)); },
       [tell] { tell(CancelledAnswer<Answer>()); }, nullptr});
  return id;
}

Session::RequestId Session::Open(AskedBy by, std::function<void(const SessionResult&)> answer) {
  return Ask<SessionResult>([by](SessionLink& link) { return link.Open(by); }, std::move(answer));
}

Session::RequestId Session::ListFolder(std::string path, ListAgain again, AskedBy by,
                                       std::function<void(ListingAnswer)> answer) {
  return Ask<ListingAnswer>([path = std::move(path), again,
                             by](SessionLink& link) { return ListOnLink(link, path, again, by); },
                            std::move(answer));
}

Session::RequestId Session::RemoveFile(std::string path, ChangeDone answer) {
  return Ask<ChangeAnswer>(
      [path = std::move(path)](SessionLink& link) { return RemoveFileOnLink(link, path); },
      std::move(answer));
}

Session::RequestId Session::RemovePackage(std::string path, ChangeDone answer) {
  return Ask<ChangeAnswer>(
      [path = std::move(path)](SessionLink& link) { return RemovePackageOnLink(link, path); },
      std::move(answer));
}

Session::RequestId Session::Rename(FolderRename rename, ChangeDone answer) {
  return Ask<ChangeAnswer>(
      [rename = std::move(rename)](SessionLink& link) { return RenameOnLink(link, rename); },
      std::move(answer));
}

void Session::Drop(RequestId request) {
  awaited_->erase(request);
  const std::lock_guard lock(mutex_);
  std::erase_if(jobs_, [request](const Job& job) { return job.id == request; });
}

// What waits may stand behind a worker's request, which goes on.
void Session::Cancel() {
  std::deque<Job> waiting;
  {
    const std::lock_guard lock(mutex_);
    const auto workers = std::stable_partition(jobs_.begin(), jobs_.end(),
                                               [](const Job& job) { return job.id != 0; });
    waiting.assign(std::make_move_iterator(jobs_.begin()), std::make_move_iterator(workers));
    jobs_.erase(jobs_.begin(), workers);
    if (running_ != 0) {
      link_.Cut();
    }
  }
  changed_.notify_all();
  for (const Job& job : waiting) {
    job.cancelled();
  }
}

bool Session::Stop(std::chrono::milliseconds limit) {
  awaited_->clear();
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
    jobs_.clear();
    link_.Cut();
  }
  changed_.notify_all();
  return !thread_ || thread_->Ended().WaitFor(limit);
}

SessionKey Session::Key() const {
  const std::lock_guard lock(mutex_);
  return key_;
}

// Ahead of everything that waits: workers stand still meanwhile, and the requests behind it would
// run into the forgotten session themselves.
std::optional<SessionKey> Session::Renew(const SessionKey& refused, std::stop_token stop) {
  std::unique_lock lock(mutex_);
  if (refused.grant != key_.grant) {
    return key_;
  }
  if (!renewal_) {
    renewal_ = std::make_shared<Renewal>();
    jobs_.push_front({0,
                      [this, refused = refused.grant, renewal = renewal_](SessionLink& link) {
                        RunRenewal(link, refused, renewal);
                      },
                      {},
                      nullptr});
    changed_.notify_all();
  }
  const auto renewal = renewal_;
  changed_.wait(lock, stop, [&] { return renewal->value || stopping_; });
  return renewal->value.value_or(std::nullopt);
}

void Session::RunRenewal(SessionLink& link, std::uint64_t refused,
                         const std::shared_ptr<Renewal>& renewal) {
  if (Key().grant == refused) {
    link.Close();
    link.Open(AskedBy::Program);
  }
  const std::lock_guard lock(mutex_);
  renewal->value.emplace(key_.grant != refused ? std::optional(key_) : std::nullopt);
  renewal_.reset();
  changed_.notify_all();
}

ListingAnswer Session::List(const std::string& path, std::stop_token stop) {
  const auto reply = std::make_shared<Reply<ListingAnswer>>();
  std::unique_lock lock(mutex_);
  jobs_.push_back({0,
                   [this, path, reply](SessionLink& link) {
                     if (reply.use_count() == 1) {
                       return;  // nobody waits any more
                     }
                     ListingAnswer answer =
                         ListOnLink(link, path, ListAgain::Once, AskedBy::Program);
                     const std::lock_guard answering(mutex_);
                     reply->value = std::move(answer);
                     changed_.notify_all();
                   },
                   {},
                   reply.get()});
  changed_.notify_all();
  changed_.wait(lock, stop, [&] { return reply->value || stopping_; });
  // Others wait for the connection. A person at the login prompt opens it for all.
  if (!reply->value && runningFor_ == reply.get() && !asking_) {
    link_.Cut();
  }
  return reply->value ? *std::move(reply->value)
                      : ListingAnswer{{SessionResult::End::Cancelled}, {}};
}

void Session::Add(Job job) {
  const std::lock_guard lock(mutex_);
  if (!stopping_) {
    jobs_.push_back(std::move(job));
    changed_.notify_all();
  }
}

void Session::Run() {
  Job job;
  while (TakeJob(job)) {
    job.run(link_);
    job = {};
  }
  link_.Close();
}

// The link takes up its next request under the lock, so that a cut finds either the one or the
// other.
bool Session::TakeJob(Job& job) {
  std::unique_lock lock(mutex_);
  running_ = 0;
  runningFor_ = nullptr;
  changed_.wait(lock, [this] { return stopping_ || !jobs_.empty(); });
  if (stopping_) {
    return false;
  }
  job = std::move(jobs_.front());
  jobs_.pop_front();
  running_ = job.id;
  runningFor_ = job.asker;
  link_.Begin();
  return true;
}

std::optional<LoginAnswer> Session::AskLogin(const LoginRequest& request) {
  if (!question_) {
    return std::nullopt;
  }
  using Given = Reply<std::optional<LoginAnswer>>;
  const auto given = std::make_shared<Given>();
  post_([this, request, given, awaited = std::weak_ptr(awaited_)] {
    if (awaited.expired() || Stopping()) {
      return;
    }
    question_(request, [this, given, awaited](std::optional<LoginAnswer> answer) {
      if (!awaited.expired()) {
        const std::lock_guard lock(mutex_);
        given->value = std::move(answer);
        changed_.notify_all();
      }
    });
  });
  std::unique_lock lock(mutex_);
  asking_ = true;
  changed_.wait(lock, [&] { return given->value || stopping_ || link_.WasCut(); });
  asking_ = false;
  return given->value.value_or(std::nullopt);
}

bool Session::Stopping() const {
  const std::lock_guard lock(mutex_);
  return stopping_;
}

void Session::TakeKey(const std::string& sessid) {
  {
    const std::lock_guard lock(mutex_);
    key_ = {sessid, key_.grant + 1};
  }
  granted_();
}

}  // namespace updown
