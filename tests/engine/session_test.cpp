#include "engine/session.h"

#include <gmock/gmock.h>

#include "peer/stand_in.h"
#include "service/messages.h"
#include "tests/support/environment.h"
#include "tests/support/temporary_folder.h"

namespace updown {
namespace {

using peer::Fault;

constexpr std::uint32_t kRelayConnect = 2;

class Session : public testing::TestWithParam<int> {
 protected:
  Session() { launch.serverName = "fileservice"; }

  peer::Options Options(std::optional<peer::Login> login) const {
    peer::Options options;
    options.root = folder.Path();
    options.dialect = GetParam();
    options.login = std::move(login);
    return options;
  }
  // Gives the answers one after the other, then gives up.
  std::optional<LoginAnswer> Answer(bool refused) {
    asked.push_back(refused);
    return asked.size() <= answers.size() ? std::optional(answers[asked.size() - 1]) : std::nullopt;
  }

  test::TemporaryFolder folder;
  LaunchState launch;
  FileService service;
  std::vector<LoginAnswer> answers;
  std::vector<bool> asked;
  SharedSession session{service, launch, [this](bool refused) { return Answer(refused); }};
};

TEST_P(Session, LoginLoop) {
  struct Case {
    const char* name;
    std::vector<LoginAnswer> answers;
    bool open;
    std::vector<bool> asked;
    std::ptrdiff_t connections;
  };
  const LoginAnswer wrong{u"ann@realm", u"wrong"};
  const LoginAnswer right{u"an@n@realm", u"secret"};
  const Case cases[] = {
      {"right at once", {right}, true, {false}, 1},
      {"given up", {}, false, {false}, 1},
      {"refused, then right", {wrong, right}, true, {false, true}, 2},
      {"refused twice", {wrong, {u"an@n@realm", u"x"}, right}, true, {false, true, true}, 3},
      {"refused, then given up", {wrong}, false, {false, true}, 1},
  };
  for (const Case& c : cases) {
    peer::StandIn peer(Options(peer::Login{"an@n", "secret", "realm"}));
    const test::ScopedEnvironment environment(peer.Environment());
    answers = c.answers;
    asked.clear();
    FileService fresh;
    SharedSession tried(fresh, launch, [this](bool refused) { return Answer(refused); });
    const auto opened = tried.OpenSharedSession();
    EXPECT_EQ(opened.open, c.open) << c.name;
    EXPECT_EQ(opened.error, 0U) << c.name;
    EXPECT_EQ(tried.Socket() >= 0, c.open) << c.name;
    EXPECT_EQ(asked, c.asked) << c.name;
    const auto requests = peer.Requests();
    EXPECT_EQ(std::count_if(requests.begin(), requests.end(),
                            [](const auto& seen) { return seen.message == kRelayConnect; }),
              c.connections)
        << c.name;
  }
}

TEST_P(Session, CredentialsAreKeptForTheNextOpening) {
  peer::StandIn peer(Options(peer::Login{"ann", "secret", ""}));
  const test::ScopedEnvironment environment(peer.Environment());
  answers = {{u"ann", u"secret"}};
  ASSERT_TRUE(session.OpenSharedSession().open);
  const std::string sessid = session.Sessid();
  EXPECT_TRUE(session.OpenSharedSession().open);
  EXPECT_EQ(session.Sessid(), sessid) << "an open session is left as it is";
  session.Close();
  EXPECT_TRUE(session.OpenSharedSession().open);
  EXPECT_NE(session.Sessid(), sessid);
  EXPECT_THAT(asked, testing::ElementsAre(false));
}

TEST_P(Session, WhatFailuresReport) {
  struct Case {
    const char* name;
    Fault fault;
    bool open;
    std::uint32_t error;
  };
  const Case cases[] = {
      {"busy", {Fault::Kind::WrongCode, message::kOpenSession, 0, 1, reply::kBusy}, false, 61210},
      {"shows at the listing", {Fault::Kind::DropBefore, message::kOpenSession, 0, 1, 0}, true, 0},
      {"login cut off", {Fault::Kind::DropBefore, message::kAuthenticate, 0, 1, 0}, false, 8194},
  };
  {
    peer::StandIn peer(Options(peer::Login{"ann", "secret", ""}));
    const test::ScopedEnvironment environment(peer.Environment());
    answers = {{u"ann", u"secret"}};
    EXPECT_TRUE(session.OpenSharedSession().open);
    for (const Case& c : cases) {
      session.Close();
      peer.AddFault(c.fault);
      const auto opened = session.OpenSharedSession();
      EXPECT_EQ(opened.open, c.open) << c.name;
      EXPECT_EQ(opened.error, c.error) << c.name;
      peer.ClearFaults();
    }
  }
  session.Close();
  EXPECT_EQ(session.OpenSharedSession().error, 61205U) << "no relay in the environment";
  EXPECT_LT(session.Socket(), 0);
}

INSTANTIATE_TEST_SUITE_P(Dialects, Session, testing::Values(1, 2));

}  // namespace
}  // namespace updown
