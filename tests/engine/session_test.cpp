#include "engine/session.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <thread>

#include "platform/posted_calls.h"
#include "service/messages.h"
#include "tests/support/service_world.h"

namespace updown {
namespace {

using namespace std::chrono_literals;
using Kind = peer::Fault::Kind;
using End = SessionResult::End;
namespace fs = std::filesystem;

class SessionTest : public ::testing::TestWithParam<int>, protected test::ServiceWorld {
 protected:
  explicit SessionTest(peer::Options options = test::Dialect(GetParam()))
      : ServiceWorld(std::move(options)) {}

  void Start(SessionLimits limits = {}) {
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
  }

  // Runs the main thread's queue.
  template <typename Condition>
  bool RunUntil(Condition reached) {
    const auto end = std::chrono::steady_clock::now() + 10s;
    while (!reached() && std::chrono::steady_clock::now() < end) {
      std::this_thread::sleep_for(1ms);
      calls.Run();
    }
    return reached();
  }
  bool WaitForRequest(std::uint32_t message) {
    return RunUntil([&] { return Count(message) > 0; });
  }
  template <typename Answer, typename Ask>
  Answer Await(Ask ask) {
    std::optional<Answer> answer;
    ask([&](Answer given) { answer = std::move(given); });
    EXPECT_TRUE(RunUntil([&] { return answer.has_value(); }));
    return answer.value_or(Answer{});
  }
  SessionResult Open(AskedBy by = AskedBy::Person) {
    return Await<SessionResult>([&](auto answer) { session->Open(by, answer); });
  }
  ListingAnswer List(const std::string& path, ListAgain again = ListAgain::No) {
    return Await<ListingAnswer>(
        [&](auto answer) { session->ListFolder(path, again, AskedBy::Person, answer); });
  }
  ChangeAnswer RemoveFile(const std::string& path) {
    return Await<ChangeAnswer>([&](auto answer) { session->RemoveFile(path, answer); });
  }
  ChangeAnswer RemovePackage(const std::string& path) {
    return Await<ChangeAnswer>([&](auto answer) { session->RemovePackage(path, answer); });
  }
  void MakeFile(const fs::path& path) const {
    fs::create_directories(served.File(path.parent_path()));
    test::WriteFile(served.File(path), "bytes");
  }

  PostedCalls calls{[] {}};
  std::vector<LoginAnswer> answers;
  std::vector<LoginRequest> asked;
  bool leavePromptOpen = false;
  std::atomic<int> granted{0};
  std::optional<Session> session;
};

class LoginTest : public SessionTest {
 protected:
  LoginTest() : SessionTest(test::Dialect(GetParam(), 4096, {{"an@n", "secret", "realm"}})) {}

  const LoginAnswer right{u"an@n@realm", u"secret"};
};

TEST_P(LoginTest, IsAskedForUntilItIsRightOrGivenUp) {
  const LoginAnswer wrong{u"an@n@realm", u"wrong"};
  const std::pair<std::vector<LoginAnswer>, End> cases[] = {
      {{wrong, {u"an", u"secret"}, right}, End::Done},
      {{wrong}, End::NoLogin},
  };
  for (const auto& [given, end] : cases) {
    const int done = end == End::Done ? 1 : 0;
    asked.clear();
    answers = given;
    granted = 0;
    Start();
    EXPECT_EQ(Open().end, end);
    ASSERT_EQ(asked.size(), done == 1 ? 3U : 2U);
    for (std::size_t i = 0; i < asked.size(); ++i) {
      EXPECT_EQ(asked[i].refused, i > 0);
      EXPECT_EQ(asked[i].user, i == 0 ? u"" : given[i - 1].user) << "the user name is kept";
    }
    EXPECT_EQ(granted, done);
    EXPECT_EQ(session->Key().grant, done);
  }
  // Given up: the program alone does not ask again, a person does.
  EXPECT_EQ(Open(AskedBy::Program).end, End::NoLogin);
  EXPECT_EQ(asked.size(), 2U);
  EXPECT_EQ(Open(AskedBy::Person).end, End::NoLogin);
  ASSERT_EQ(asked.size(), 3U);
  EXPECT_FALSE(asked.back().refused) << "what was refused is not sent once more";
}

TEST_P(LoginTest, FailuresToOpenHaveTheirReport) {
  const std::pair<peer::Fault, std::uint32_t> cases[] = {
      {{.kind = Kind::WrongCode, .message = message::kOpenSession, .code = reply::kBusy}, 61210},
      {{.kind = Kind::DropBefore, .message = message::kOpenSession}, 8194},
      {{.kind = Kind::DropBefore, .message = message::kAuthenticate, .times = 2}, 8194},
      {{.kind = Kind::Stall, .message = message::kOpenSession}, 8194},
      {{.kind = Kind::Stall, .message = 1}, 61205},
  };
  answers = {right};
  Start({.opening = 500ms});
  EXPECT_TRUE(Open().Done()) << "the first answer settles the dialect";
  for (const auto& [fault, report] : cases) {
    SCOPED_TRACE(report);
    session->Stop(10s);
    Start({.opening = 500ms});
    peer.AddFault(fault);
    asked.clear();
    const SessionResult result = Open();
    EXPECT_EQ(result.end, End::Failed);
    EXPECT_EQ(result.report, report);
    peer.ClearFaults();
    EXPECT_TRUE(Open().Done()) << "the next one goes through";
  }
}

// Each fault strikes a request on a connection that has stood idle before.
TEST_P(SessionTest, ADeadConnectionIsReplacedOnce) {
  MakeFile("20081105093012/a.txt");
  Start({.silence = 500ms});
  ASSERT_TRUE(Open().Done());
  const std::uint32_t list = message::kList;
  const struct {
    const char* name;
    peer::Fault fault;
    ListAgain again;
    End end;
  } cases[] = {
      {"dies", {Kind::DropBefore, list}, ListAgain::No, End::Done},
      {"dies again", {Kind::DropBefore, list, 0, 2}, ListAgain::No, End::Failed},
      {"falls silent", {Kind::Stall, list}, ListAgain::No, End::Done},
      {"refused", {Kind::WrongCode, list, 0, 1, 32768 + 8}, ListAgain::Once, End::Done},
      {"breaks off, twice", {Kind::CutListing, list, 0, 2}, ListAgain::Once, End::Failed},
      {"makes no sense", {Kind::BadEntry, list, 0, 2}, ListAgain::Once, End::Failed},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    peer.AddFault(c.fault);
    const ListingAnswer answer = List("/20081105093012", c.again);
    EXPECT_EQ(answer.result.end, c.end);
    EXPECT_EQ(answer.entries.empty(), c.end != End::Done);
    peer.ClearFaults();
    EXPECT_TRUE(Open().Done());
  }
  // The end of the connection is seen before the removal: it goes out on a new one.
  peer.AddFault({.kind = Kind::DropAfter, .message = list});
  EXPECT_TRUE(List("/").result.Done());
  std::this_thread::sleep_for(50ms);
  EXPECT_TRUE(RemoveFile("/20081105093012/a.txt").result.Done());
  EXPECT_FALSE(fs::exists(served.File("20081105093012/a.txt")));
  // A removal that was sent is not repeated.
  peer.ForgetRequests();
  peer.AddFault({.kind = Kind::DropBefore, .message = message::kRemoveFile});
  const ChangeAnswer dropped = RemoveFile("/20081105093012/b.txt");
  EXPECT_EQ(dropped.result.report, 8194U);
  EXPECT_TRUE(dropped.uncertain);
  EXPECT_EQ(Count(message::kRemoveFile), 1);
}

TEST_P(SessionTest, RemovesAndRenamesPackages) {
  const std::string old = "20081105093012";
  const std::string renamed = "20081105093013";
  FolderRename rename{"/" + old, "/" + renamed, {{"missing.ini", "still missing.ini"}}};
  for (const char* ending : {".ini", "_Start.ini"}) {
    MakeFile(old + "/" + old + ending);
    rename.files.push_back({old + ending, renamed + ending});
  }
  MakeFile(old + "/a.txt");
  Start();
  const auto moved =
      Await<ChangeAnswer>([&](auto answer) { session->Rename(rename, std::move(answer)); });
  EXPECT_TRUE(moved.result.Done());
  for (const std::string& name : {renamed + ".ini", renamed + "_Start.ini", std::string("a.txt")}) {
    EXPECT_TRUE(fs::exists(served.File(renamed + "/" + name))) << name;
  }

  peer.AddFault(
      {.kind = Kind::WrongCode, .message = message::kRemoveFile, .skip = 1, .code = 32775});
  const ChangeAnswer refused = RemovePackage("/" + renamed);
  EXPECT_EQ(refused.result.report, 8199U);
  EXPECT_TRUE(refused.uncertain) << "one file has gone";
  EXPECT_FALSE(refused.failedName.empty());
  EXPECT_TRUE(RemovePackage("/" + renamed).result.Done());
  EXPECT_FALSE(fs::exists(served.File(renamed)));

  peer.ForgetRequests();
  const std::string tooLong = "/" + std::string(260, 'x');
  EXPECT_EQ(List(tooLong).result.report, 8195U);
  EXPECT_EQ(RemoveFile(tooLong).result.report, 8195U);
  EXPECT_TRUE(peer.Requests().empty());
}

TEST_P(SessionTest, CancelAndDrop) {
  Start();
  ASSERT_TRUE(Open().Done());
  peer.AddFault({.kind = Kind::Stall, .message = message::kList});
  std::vector<std::string> answered;
  const auto list = [&](const std::string& name, ListAgain again) {
    return session->ListFolder("/", again, AskedBy::Person, [&, name](const ListingAnswer& answer) {
      answered.push_back(name + std::to_string(static_cast<int>(answer.result.end)));
    });
  };
  list("stalled ", ListAgain::Once);
  const auto dropped = list("dropped ", ListAgain::No);
  list("waiting ", ListAgain::No);
  ASSERT_TRUE(WaitForRequest(message::kList));
  session->Drop(dropped);
  session->Cancel();
  EXPECT_TRUE(RunUntil([&] { return !session->Busy(); }));
  EXPECT_EQ(answered, (std::vector<std::string>{"waiting 2", "stalled 2"}));
  EXPECT_TRUE(List("/").result.Done()) << "what is asked later goes on";

  peer.AddFault({.kind = Kind::Stall, .message = message::kRemoveFile});
  std::optional<ChangeAnswer> removal;
  session->RemoveFile("/a.txt", [&](const ChangeAnswer& answer) { removal = answer; });
  ASSERT_TRUE(WaitForRequest(message::kRemoveFile));
  session->Cancel();
  ASSERT_TRUE(RunUntil([&] { return removal.has_value(); }));
  EXPECT_EQ(removal->result.end, End::Cancelled);
  EXPECT_TRUE(removal->uncertain);
}

// For a listing that never comes.
TEST_P(SessionTest, AWorkerThatIsToldToStopDoesNotWait) {
  Start();
  ASSERT_TRUE(Open().Done());
  peer.AddFault({.kind = Kind::Stall, .message = message::kList});
  std::optional<ListingAnswer> listing;
  std::jthread worker([&](const std::stop_token& stop) { listing = session->List("/", stop); });
  ASSERT_TRUE(WaitForRequest(message::kList));
  worker.request_stop();
  worker.join();
  EXPECT_EQ(listing->result.end, End::Cancelled);
}

TEST_P(LoginTest, EndsAtOnceInEveryStall) {
  constexpr std::uint32_t kPrompt = 9999;  // no message
  MakeFile("20081105093012/a.txt");
  for (const std::uint32_t stalled : {1U, 2U, message::kOpenSession, message::kAuthenticate,
                                      message::kList, message::kRemoveFile, kPrompt}) {
    SCOPED_TRACE(stalled);
    peer.ForgetRequests();
    peer.ClearFaults();
    peer.AddFault({.kind = Kind::Stall, .message = stalled});
    asked.clear();
    leavePromptOpen = stalled == kPrompt;
    answers.assign(leavePromptOpen ? 0 : 1, right);
    Start();
    bool answered = false;
    session->RemovePackage("/20081105093012", [&](const ChangeAnswer&) { answered = true; });
    ASSERT_TRUE(RunUntil([&] { return leavePromptOpen ? !asked.empty() : Count(stalled) > 0; }));
    EXPECT_TRUE(session->Stop(1s));
    session.reset();
    calls.Run();
    EXPECT_FALSE(answered) << "nothing comes after the end";
  }
}

TEST_P(SessionTest, ManyStartsAndEnds) {
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
INSTANTIATE_TEST_SUITE_P(Dialects, LoginTest, ::testing::Values(1, 2));

}  // namespace
}  // namespace updown
