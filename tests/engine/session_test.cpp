#include "engine/session.h"

#include <gtest/gtest.h>

#include "peer/stand_in.h"
#include "service/messages.h"
#include "tests/support/environment.h"
#include "tests/support/temporary_folder.h"

namespace updown {
namespace {

using peer::Fault;

class Session : public ::testing::TestWithParam<int> {
 protected:
  Session() {
    launch.serverName = "fileservice";
    options.root = folder.Path();
    options.dialect = GetParam();
    options.login = peer::Login{"an@n", "secret", "realm"};
  }

  // Gives the answers one after the other, then gives up.
  std::optional<LoginAnswer> Answer(bool refused) {
    asked.push_back(refused);
    return asked.size() <= answers.size() ? std::optional(answers[asked.size() - 1]) : std::nullopt;
  }
  SharedSession MakeSession() {
    asked.clear();
    return {service, launch, [this](bool refused) { return Answer(refused); }};
  }

  test::TemporaryFolder folder;
  peer::Options options;
  LaunchState launch;
  FileService service;
  const LoginAnswer right{u"an@n@realm", u"secret"};
  std::vector<LoginAnswer> answers;
  std::vector<bool> asked;
};

TEST_P(Session, LoginLoop) {
  peer::StandIn peer(options);
  const test::ScopedEnvironment environment(peer.Environment());
  struct Case {
    const char* name;
    std::vector<LoginAnswer> answers;
    bool open;
    std::vector<bool> asked;
  };
  const LoginAnswer wrong{u"an@n@realm", u"wrong"};
  const LoginAnswer noRealm{u"an", u"secret"};
  const Case cases[] = {
      {"right at once", {right}, true, {false}},
      {"given up", {}, false, {false}},
      {"refused twice, then right", {wrong, noRealm, right}, true, {false, true, true}},
      {"refused, then given up", {wrong}, false, {false, true}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    answers = c.answers;
    SharedSession session = MakeSession();
    const auto opened = session.OpenSharedSession();
    EXPECT_EQ(opened.open, c.open);
    EXPECT_EQ(opened.error, 0U);
    EXPECT_EQ(session.Link().IsOpen(), c.open);
    EXPECT_EQ(asked, c.asked);
  }
}

TEST_P(Session, CredentialsAreKeptAndFailuresReported) {
  struct Case {
    const char* name;
    Fault fault;
    bool open;
    std::uint32_t error;
  };
  const Case cases[] = {
      {"none", {Fault::Kind::Stall, message::kList, 0, 1, 0}, true, 0},
      {"busy", {Fault::Kind::WrongCode, message::kOpenSession, 0, 1, reply::kBusy}, false, 61210},
      {"shows at the listing", {Fault::Kind::DropBefore, message::kOpenSession, 0, 1, 0}, true, 0},
      {"login cut off", {Fault::Kind::DropBefore, message::kAuthenticate, 0, 1, 0}, false, 8194},
  };
  answers = {right};
  SharedSession session = MakeSession();
  {
    peer::StandIn peer(options);
    const test::ScopedEnvironment environment(peer.Environment());
    EXPECT_TRUE(session.OpenSharedSession().open);
    const std::string sessid = session.Sessid();
    EXPECT_TRUE(session.OpenSharedSession().open);
    EXPECT_EQ(session.Sessid(), sessid) << "an open session is left as it is";
    for (const Case& c : cases) {
      SCOPED_TRACE(c.name);
      session.Close();
      peer.AddFault(c.fault);
      const auto opened = session.OpenSharedSession();
      EXPECT_EQ(opened.open, c.open);
      EXPECT_EQ(opened.error, c.error);
      peer.ClearFaults();
    }
    EXPECT_NE(session.Sessid(), sessid);
    EXPECT_EQ(asked, std::vector<bool>{false}) << "the credentials are kept";
  }
  session.Close();
  EXPECT_EQ(session.OpenSharedSession().error, 61205U) << "no relay in the environment";
}

// Its rest would be taken for the reply to the next request.
TEST_P(Session, IsOpenedAnewWhenAReplyWasGivenUp) {
  peer::StandIn peer(options);
  const test::ScopedEnvironment environment(peer.Environment());
  answers = {right};
  SharedSession session = MakeSession();
  ASSERT_TRUE(session.OpenSharedSession().open);
  peer.AddFault({.kind = Fault::Kind::Oversized, .message = message::kList});
  EXPECT_EQ(session.Ops().ListFolder(session.Link(), "/").error, result::kConnection);
  EXPECT_FALSE(session.Link().IsOpen());
  ASSERT_TRUE(session.OpenSharedSession().open);
  EXPECT_EQ(session.Ops().ListFolder(session.Link(), "/").error, result::kOk);
}

INSTANTIATE_TEST_SUITE_P(Dialects, Session, ::testing::Values(1, 2));

}  // namespace
}  // namespace updown
