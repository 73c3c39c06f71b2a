#include "engine/session.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <deque>
#include <filesystem>
#include <fstream>
#include <thread>

#include "peer/stand_in.h"
#include "service/messages.h"
#include "tests/support/environment.h"
#include "tests/support/temporary_folder.h"

namespace updown {
namespace {

using namespace std::chrono_literals;
using peer::Fault;
using Kind = peer::Fault::Kind;
using End = SessionResult::End;
namespace fs = std::filesystem;

// The main thread's queue, pumped by the test.
class Calls {
 public:
  void Post(std::function<void()> call) {
    {
      const std::lock_guard lock(mutex_);
      calls_.push_back(std::move(call));
    }
    posted_.notify_one();
  }
  template <typename Condition>
  bool RunUntil(Condition reached, std::chrono::milliseconds limit = 10s) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!reached()) {
      std::unique_lock lock(mutex_);
      if (!posted_.wait_until(lock, end, [this] { return !calls_.empty(); })) {
        return false;
      }
      const auto call = std::move(calls_.front());
      calls_.pop_front();
      lock.unlock();
      call();
    }
    return true;
  }
  void RunWaiting() {
    RunUntil([] { return false; }, 1ms);
  }

 private:
  std::mutex mutex_;
  std::condition_variable posted_;
  std::deque<std::function<void()>> calls_;
};

class SessionTest : public ::testing::TestWithParam<int> {
 protected:
  SessionTest() {
    launch.serverName = "fileservice";
    options.root = served.Path();
    options.dialect = GetParam();
  }

  peer::StandIn& Serve() {
    peer.emplace(options);
    environment.emplace(peer->Environment());
    return *peer;
  }
  Session& Start(SessionLimits limits = {}) {
    session.emplace(
        service, launch, [this](std::function<void()> call) { calls.Post(std::move(call)); },
        [this](const LoginRequest& request, LoginAsked answer) {
          asked.push_back(request);
          if (asked.size() <= answers.size()) {
            answer(answers.at(asked.size() - 1));
          } else if (!leavePromptOpen) {
            answer(std::nullopt);
          }
        },
        [this] { ++granted; }, limits);
    return *session;
  }

  SessionResult Open(AskedBy by = AskedBy::Person) {
    std::optional<SessionResult> result;
    session->Open(by, [&](const SessionResult& given) { result = given; });
    EXPECT_TRUE(calls.RunUntil([&] { return result.has_value(); }));
    return result.value_or(SessionResult{});
  }
  ListingAnswer List(const std::string& path, ListAgain again = ListAgain::No) {
    std::optional<ListingAnswer> result;
    session->ListFolder(path, again, AskedBy::Person,
                        [&](ListingAnswer given) { result = std::move(given); });
    EXPECT_TRUE(calls.RunUntil([&] { return result.has_value(); }));
    return result.value_or(ListingAnswer{});
  }
  template <typename Ask>
  ChangeAnswer Change(Ask ask) {
    std::optional<ChangeAnswer> result;
    ask([&](const ChangeAnswer& given) { result = given; });
    EXPECT_TRUE(calls.RunUntil([&] { return result.has_value(); }));
    return result.value_or(ChangeAnswer{});
  }
  ChangeAnswer RemoveFile(const std::string& path) {
    return Change([&](auto answer) { session->RemoveFile(path, answer); });
  }
  long Count(std::uint32_t message) const {
    const auto requests = peer->Requests();
    return std::count_if(requests.begin(), requests.end(),
                         [message](const auto& seen) { return seen.message == message; });
  }
  void WaitForRequest(std::uint32_t message) {
    ASSERT_TRUE(RunUntilSeen([&] { return Count(message) > 0; }));
  }
  // For what happens on other threads without a call to this one.
  template <typename Condition>
  bool RunUntilSeen(Condition reached) {
    for (int i = 0; i < 1000 && !reached(); ++i) {
      calls.RunUntil(reached, 10ms);
    }
    return reached();
  }
  fs::path MakeFile(const std::string& path) const {
    const fs::path file = fs::path(served.Path()) / path;
    fs::create_directories(file.parent_path());
    std::ofstream(file) << path;
    return file;
  }

  test::TemporaryFolder served;
  peer::Options options;
  LaunchState launch;
  FileService service;
  std::optional<peer::StandIn> peer;
  std::optional<test::ScopedEnvironment> environment;
  Calls calls;
  std::vector<LoginAnswer> answers;
  std::vector<LoginRequest> asked;
  bool leavePromptOpen = false;
  std::atomic<int> granted{0};
  std::optional<Session> session;
};

TEST_P(SessionTest, LoginLoop) {
  options.login = peer::Login{"an@n", "secret", "realm"};
  const LoginAnswer right{u"an@n@realm", u"secret"};
  const LoginAnswer wrong{u"an@n@realm", u"wrong"};
  struct Case {
    const char* name;
    std::vector<LoginAnswer> answers;
    End end;
    std::vector<bool> refused;
  };
  const Case cases[] = {
      {"right at once", {right}, End::Done, {false}},
      {"given up", {}, End::NoLogin, {false}},
      {"refused twice, then right",
       {wrong, {u"an", u"secret"}, right},
       End::Done,
       {false, true, true}},
      {"refused, then given up", {wrong}, End::NoLogin, {false, true}},
  };
  Serve();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    asked.clear();
    answers = c.answers;
    granted = 0;
    Start();
    EXPECT_EQ(Open().end, c.end);
    ASSERT_EQ(asked.size(), c.refused.size());
    for (std::size_t i = 0; i < asked.size(); ++i) {
      EXPECT_EQ(asked[i].refused, c.refused[i]);
      EXPECT_EQ(asked[i].user, i == 0 ? u"" : c.answers[i - 1].user) << "the user name is kept";
    }
    EXPECT_EQ(granted, c.end == End::Done ? 1 : 0);
    EXPECT_EQ(session->Key().grant, c.end == End::Done ? 1U : 0U);
  }
  // Given up: the program alone does not ask again, a person does.
  const std::size_t questions = asked.size();
  EXPECT_EQ(Open(AskedBy::Program).end, End::NoLogin);
  EXPECT_EQ(asked.size(), questions);
  EXPECT_EQ(Open(AskedBy::Person).end, End::NoLogin);
  EXPECT_EQ(asked.size(), questions + 1);
  EXPECT_FALSE(asked.back().refused) << "what was refused is not sent once more";
}

TEST_P(SessionTest, FailuresToOpenHaveTheirReport) {
  struct Case {
    const char* name;
    Fault fault;
    End end;
    std::uint32_t report;
  };
  const Case cases[] = {
      {"busy",
       {.kind = Kind::WrongCode, .message = message::kOpenSession, .code = reply::kBusy},
       End::Failed,
       61210},
      {"cut off", {.kind = Kind::DropBefore, .message = message::kOpenSession}, End::Failed, 8194},
      {"login cut off",
       {.kind = Kind::DropBefore, .message = message::kAuthenticate, .times = 2},
       End::Failed,
       8194},
      {"silent", {.kind = Kind::Stall, .message = message::kOpenSession}, End::Failed, 8194},
      {"silent relay", {.kind = Kind::Stall, .message = 1}, End::Failed, 61205},
  };
  options.login = peer::Login{"an", "secret", ""};
  answers = {{u"an", u"secret"}};
  Serve();
  Start({.opening = 500ms});
  EXPECT_TRUE(Open().Done()) << "the first answer settles the dialect";
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    session->Stop(10s);
    Start({.opening = 500ms});
    peer->AddFault(c.fault);
    asked.clear();
    const SessionResult result = Open();
    EXPECT_EQ(result.end, c.end);
    EXPECT_EQ(result.report, c.report);
    peer->ClearFaults();
    EXPECT_TRUE(Open().Done()) << "the next one goes through";
  }
  peer.reset();
  Start({.opening = 500ms});
  EXPECT_EQ(Open().report, 61205U);
}

// Each fault strikes a request on a connection that has stood idle before.
TEST_P(SessionTest, ADeadConnectionIsReplacedOnce) {
  const fs::path file = MakeFile("20081105093012/a.txt");
  Serve();
  Start({.silence = 500ms});
  ASSERT_TRUE(Open().Done());
  struct Case {
    const char* name;
    Fault fault;
    ListAgain again;
    End end;
  };
  const std::uint32_t list = message::kList;
  const Case cases[] = {
      {"healthy", {.kind = Kind::DropBefore, .message = 1000}, ListAgain::No, End::Done},
      {"dies", {.kind = Kind::DropBefore, .message = list}, ListAgain::No, End::Done},
      {"dies again",
       {.kind = Kind::DropBefore, .message = list, .times = 2},
       ListAgain::No,
       End::Failed},
      {"falls silent", {.kind = Kind::Stall, .message = list}, ListAgain::No, End::Done},
      {"refused",
       {.kind = Kind::WrongCode, .message = list, .code = 32768 + 8},
       ListAgain::Once,
       End::Done},
      {"breaks off, twice",
       {.kind = Kind::CutListing, .message = list, .times = 2},
       ListAgain::Once,
       End::Failed},
      {"makes no sense",
       {.kind = Kind::BadEntry, .message = list, .times = 2},
       ListAgain::Once,
       End::Failed},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    peer->AddFault(c.fault);
    const ListingAnswer answer = List("/20081105093012", c.again);
    EXPECT_EQ(answer.result.end, c.end);
    EXPECT_EQ(answer.entries.empty(), c.end != End::Done);
    peer->ClearFaults();
    EXPECT_TRUE(Open().Done());
  }
  // The end of the connection is seen before the removal: it goes out on a new one.
  peer->AddFault({.kind = Kind::DropAfter, .message = list});
  EXPECT_TRUE(List("/").result.Done());
  std::this_thread::sleep_for(50ms);
  EXPECT_TRUE(RemoveFile("/20081105093012/a.txt").result.Done());
  EXPECT_FALSE(fs::exists(file));
  // A removal that was sent is not repeated.
  MakeFile("20081105093012/b.txt");
  peer->ForgetRequests();
  peer->AddFault({.kind = Kind::DropBefore, .message = message::kRemoveFile});
  const ChangeAnswer dropped = RemoveFile("/20081105093012/b.txt");
  EXPECT_EQ(dropped.result.report, 8194U);
  EXPECT_TRUE(dropped.uncertain);
  EXPECT_EQ(Count(message::kRemoveFile), 1);
}

TEST_P(SessionTest, RemovesAndRenamesPackages) {
  const std::string old = "20081105093012";
  const std::string renamed = "20081105093013";
  for (const char* name : {".ini", "_Start.ini", "/"}) {
    MakeFile(old + "/" + (name == std::string("/") ? "a.txt" : old + name));
  }
  Serve();
  Start();
  FolderRename rename{"/" + old, "/" + renamed, {}};
  for (const char* ending : {".ini", "_Start.ini"}) {
    rename.files.push_back({old + ending, renamed + ending});
  }
  rename.files.push_back({"missing.ini", "still missing.ini"});
  const ChangeAnswer moved =
      Change([&](auto answer) { session->Rename(rename, std::move(answer)); });
  EXPECT_TRUE(moved.result.Done());
  const fs::path folder = fs::path(served.Path()) / renamed;
  EXPECT_TRUE(fs::exists(folder / (renamed + ".ini")));
  EXPECT_TRUE(fs::exists(folder / (renamed + "_Start.ini")));
  EXPECT_TRUE(fs::exists(folder / "a.txt"));

  peer->AddFault(
      {.kind = Kind::WrongCode, .message = message::kRemoveFile, .skip = 1, .code = 32775});
  const auto remove = [&](auto answer) { session->RemovePackage("/" + renamed, answer); };
  const ChangeAnswer refused = Change(remove);
  EXPECT_EQ(refused.result.report, 8199U);
  EXPECT_TRUE(refused.uncertain) << "one file has gone";
  EXPECT_FALSE(refused.failedName.empty());
  EXPECT_TRUE(Change(remove).result.Done());
  EXPECT_FALSE(fs::exists(folder));

  peer->ForgetRequests();
  const std::string tooLong = "/" + std::string(260, 'x');
  EXPECT_EQ(List(tooLong).result.report, 8195U);
  EXPECT_EQ(RemoveFile(tooLong).result.report, 8195U);
  EXPECT_TRUE(peer->Requests().empty());
}

TEST_P(SessionTest, CancelAndDrop) {
  MakeFile("a.txt");
  Serve();
  Start();
  ASSERT_TRUE(Open().Done());
  peer->AddFault({.kind = Kind::Stall, .message = message::kList});
  std::vector<std::string> answered;
  const auto note = [&](const char* name) {
    return [&answered, name](const ListingAnswer& answer) {
      answered.push_back(name + std::to_string(static_cast<int>(answer.result.end)));
    };
  };
  session->ListFolder("/", ListAgain::Once, AskedBy::Person, note("stalled "));
  const auto dropped = session->ListFolder("/", ListAgain::No, AskedBy::Person, note("dropped "));
  session->ListFolder("/", ListAgain::No, AskedBy::Person, note("waiting "));
  WaitForRequest(message::kList);
  session->Drop(dropped);
  session->Cancel();
  EXPECT_TRUE(calls.RunUntil([&] { return !session->Busy(); }));
  EXPECT_EQ(answered, (std::vector<std::string>{"waiting 2", "stalled 2"}));
  EXPECT_TRUE(List("/").result.Done()) << "what is asked later goes on";

  peer->ForgetRequests();
  peer->AddFault({.kind = Kind::Stall, .message = message::kRemoveFile});
  std::optional<ChangeAnswer> removal;
  session->RemoveFile("/a.txt", [&](const ChangeAnswer& answer) { removal = answer; });
  WaitForRequest(message::kRemoveFile);
  session->Cancel();
  EXPECT_TRUE(calls.RunUntil([&] { return removal.has_value(); }));
  EXPECT_EQ(removal->result.end, End::Cancelled);
  EXPECT_TRUE(removal->uncertain);
}

// For a listing that never comes.
TEST_P(SessionTest, AWorkerThatIsToldToStopDoesNotWait) {
  Serve();
  Start();
  EXPECT_EQ(session->Key().grant, 0U);
  ASSERT_TRUE(Open().Done());
  EXPECT_FALSE(session->Key().sessid.empty());
  peer->AddFault({.kind = Kind::Stall, .message = message::kList});
  std::optional<ListingAnswer> listing;
  std::jthread worker([&](const std::stop_token& stop) { listing = session->List("/", stop); });
  WaitForRequest(message::kList);
  worker.request_stop();
  worker.join();
  EXPECT_EQ(listing->result.end, End::Cancelled);
}

TEST_P(SessionTest, EndsAtOnceInEveryStall) {
  options.login = peer::Login{"an", "secret", ""};
  answers = {{u"an", u"secret"}};
  MakeFile("20081105093012/a.txt");
  Serve();
  for (const std::uint32_t stalled : {1U, 2U, message::kOpenSession, message::kAuthenticate,
                                      message::kList, message::kRemoveFile, 0U}) {
    SCOPED_TRACE(stalled);
    peer->ForgetRequests();
    peer->ClearFaults();
    asked.clear();
    leavePromptOpen = stalled == 0;
    if (leavePromptOpen) {
      answers.clear();
    } else {
      peer->AddFault({.kind = Kind::Stall, .message = stalled});
    }
    Start();
    bool answered = false;
    session->RemovePackage("/20081105093012", [&](const ChangeAnswer&) { answered = true; });
    ASSERT_TRUE(
        RunUntilSeen([&] { return leavePromptOpen ? !asked.empty() : Count(stalled) > 0; }));
    const auto began = std::chrono::steady_clock::now();
    EXPECT_TRUE(session->Stop(10s));
    EXPECT_LT(std::chrono::steady_clock::now() - began, 1s);
    session.reset();
    calls.RunWaiting();
    EXPECT_FALSE(answered) << "nothing comes after the end";
  }
}

TEST_P(SessionTest, ManyStartsAndEnds) {
  Serve();
  for (int i = 0; i < 1000; ++i) {
    Start();
    session->ListFolder("/", ListAgain::Once, AskedBy::Program, [](const ListingAnswer&) {});
    std::optional<std::jthread> worker;
    if (i % 4 == 0) {
      worker.emplace([&](const std::stop_token& stop) { session->List("/", stop); });
    }
    std::this_thread::sleep_for(std::chrono::microseconds(i % 10 * 100));
    ASSERT_TRUE(session->Stop(10s)) << "round " << i;
    worker.reset();
    session.reset();
  }
}

INSTANTIATE_TEST_SUITE_P(Dialects, SessionTest, ::testing::Values(1, 2));

}  // namespace
}  // namespace updown
